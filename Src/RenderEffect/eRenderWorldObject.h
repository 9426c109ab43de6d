// Objects standing at world positions that keep their size on the screen, such as station
// symbols, drawn with the "WorldPoint" program. Beside each source mesh a second vertex
// stream, the append mesh, carries two flag bytes per vertex (attribute 12), through which
// single objects are hidden or marked without touching their vertices.
//
// Source meshes: the third float of each vertex is the number of the object it belongs to,
// and the vertices of one object are consecutive.
#pragma once
#include "eRect.h"
#include "eRenderObject.h"
#include "eVector4.h"
#include <string>
#include <vector>

namespace KYR
{

// One station's box as the avoidance hands it in: two flags, then a box in grid units.
struct AvoidBound
{
    unsigned char m_bVisible = 1;
    unsigned char m_bSelected = 0;
    eRect m_rcBound;
};
static_assert(sizeof(AvoidBound) == 20, "AvoidBound is a 20-byte record");

// How the symbol size follows the camera: 0 with the camera distance, 1 fixed, 2 with the
// distance up to the self-adapt height. Other values give a factor of 1.
enum ScaleType : int
{
    eST_DISTANCE = 0,
    eST_FIXED = 1,
    eST_SELF_ADAPT = 2,
};

// Passed to the program as they are (see Src/Host/Shaders/WorldPoint.vert).
enum ShowType : int
{
    eSHT_ALL = -2,
};

enum ColorType : int
{
    eCT_UNIFORM = 0,
    eCT_VERTEX = 1,
    eCT_COLOR_TABLE = 2,
};

class eRenderWorldObject : public eRenderObject
{
public:
    eRenderWorldObject();
    // Copies share the colour table and the append meshes as well as what the base shares.
    eRenderWorldObject(eRenderWorldObject const&) = default;
    eRenderWorldObject& operator=(eRenderWorldObject const&) = default;
    ~eRenderWorldObject() override;

    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    void SetRelativeHeight(float height) { m_fRelativeHeight = height; }
    void SetScaleType(ScaleType type) { m_eScaleType = type; }
    ScaleType GetScaleType() { return m_eScaleType; }
    void SetSelfAdaptCameraHeight(double height) { m_dSelfAdaptCameraHeight = height; }
    void SetSize(double size) { m_dSize = size; }
    double GetSize() { return m_dSize; }
    void SetShowType(ShowType type) { m_eShowType = type; }
    ShowType GetShowType() { return m_eShowType; }
    void SetShowLevel(int level) { m_nShowLevel = level; }
    int GetShowLevel() { return m_nShowLevel; }
    void SetColorType(ColorType type) { m_eColorType = type; }
    ColorType GetColorType() { return m_eColorType; }
    void SetUniformColor(eVector4T<unsigned char> color) { m_UniformColor = color; }
    eVector4T<unsigned char> GetUniformColor() { return m_UniformColor; }
    void SetStartValue(float value) { m_fStartValue = value; }

    // Replaces the colour table (repeat, linear); an unreadable file leaves none.
    void SetColorTable(std::string file);
    // Makes the append meshes and reads the object numbers, for meshes added since. Must
    // run while the source meshes still hold their vertices, before Initialize drops them.
    void CreateAppendMeshs();
    // Writes the two flag bytes of each object from its bound, in object order, and
    // uploads the append meshes again.
    void UpdateAppendMesh(std::vector<AvoidBound> const& bounds);

    // Scale factor for a camera distance; distance becomes the one sent to the program.
    double ComputeScaleFactor(double& distance);

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    void DrawWithAppendMesh(eMesh* mesh, eMesh* append);

    float m_fRelativeHeight;
    ScaleType m_eScaleType;
    double m_dSelfAdaptCameraHeight;
    double m_dSize;
    ShowType m_eShowType;
    int m_nShowLevel;
    ColorType m_eColorType;
    eVector4T<unsigned char> m_UniformColor;
    float m_fStartValue;
    eMatrix4T<float> m_PointMatrix;
    std::string m_strReserved; // copied with the object, read by nothing
    eShared<eTexture> m_pColorTableTexture;
    std::vector<eShared<eMesh>> m_arAppendMeshes;
    std::vector<std::vector<int>> m_arObjectIds;
};

} // namespace KYR
