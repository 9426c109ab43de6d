// The track of a typhoon played against a time value that the application moves: a line
// along the track up to that time, a level picture wherever the wind level changes, and a
// turning symbol at the typhoon's interpolated place. The effect keeps no clock; vertices
// are longitude, latitude and time, and the programs place them in either scene mode.
#pragma once
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eVertexData;

class eRenderTyphoonAnimation : public eRenderable
{
public:
    // Custom uniforms of "TimePoint", in the order of its role line.
    enum eTimePointRole
    {
        eTPR_TIME_START = 0,
        eTPR_CURRENT_TIME,
    };
    // Custom uniforms of "ParallelSpherePoint", in the order of its role line.
    enum eSpherePointRole
    {
        eSPR_TIME_START = 0,
        eSPR_CURRENT_TIME,
        eSPR_PICTURE_MODE,
        eSPR_SIZE_MODE,
        eSPR_ROTATE_ANGLE,
        eSPR_POINT_SIZE,
        eSPR_TEXT_COLUMNS,
    };

    eRenderTyphoonAnimation();
    // Copies share the three vertex stores; the last holder frees them.
    eRenderTyphoonAnimation(eRenderTyphoonAnimation const&) = default;
    eRenderTyphoonAnimation& operator=(eRenderTyphoonAnimation const&) = default;
    ~eRenderTyphoonAnimation() override;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char Refresh(eRenderEngine*, eCamera*) override { return 0; }
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override { return 0; }
    double GetSquaredViewDepth(eCamera*) override { return 0.0; }
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // Track points: x time (ascending), y wind level or speed, z longitude, w latitude.
    void UpDateTyphoonPath(std::vector<eVector4T<double>> track);
    void SetCurrentTime(double time) { m_currentTime = time; }

    void SetIsConvertWind(unsigned char convert) { m_isConvertWind = convert; }
    unsigned char GetIsConvertWind() const { return m_isConvertWind; }
    void SetTextColNum(unsigned int columns) { m_textColNum = columns; }
    unsigned int GetTextColNum() const { return m_textColNum; }
    void SetRotateAngle(double angle) { m_rotateAngle = angle; }
    double GetRotateAngle() const { return m_rotateAngle; }
    void SetRotateAngleDelta(double delta) { m_rotateAngleDelta = delta; }
    double GetRotateAngleDelta() const { return m_rotateAngleDelta; }
    void SetTextSize(double size) { m_textSize = size; }
    double GetTextSize() const { return m_textSize; }
    void SetSymbolSizeScale(double scale) { m_symbolSizeScale = scale; }
    double GetSymbolSizeScale() const { return m_symbolSizeScale; }
    void SetSymbolPicturePath(eString path);
    eString GetSymbolPicturePath() const { return m_symbolPicturePath; }
    void SetTextPicturePath(eString path);
    eString GetTextPicturePath() const { return m_textPicturePath; }

protected:
    // The track point for a time: place and time interpolated, the wind value held until
    // the next point is reached; (-1, 0, 0, 0) outside the track.
    eVector4T<double> GetSymbolMessage(double time);
    void CreateBuffer();
    void DeleteBuffer();
    void CreateTyphoonPath();
    void CreateTyphoonText();
    void UpdateSymbol(eVector4T<double> message);

    unsigned char m_isConvertWind;
    bool m_initialized;
    unsigned int m_textColNum;
    double m_rotateAngle;
    double m_rotateAngleDelta;
    double m_currentTime;
    double m_textSize;
    double m_symbolSizeScale;
    eString m_symbolPicturePath;
    eString m_textPicturePath;
    eShared<eVertexData> m_pathVertices;
    eShared<eVertexData> m_textVertices;
    eShared<eVertexData> m_symbolVertices;
    std::vector<eVector4T<double>> m_track;

private:
    virtual void RenderPath(eRenderEngine*, eRenderSystem*, eCamera*);
    virtual void RenderTextPicture(eRenderEngine*, eRenderSystem*, eCamera*);
};

} // namespace KYR
