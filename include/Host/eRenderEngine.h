// Frame-wide services of the engine, handed to nearly every effect operation.
#pragma once
#include "eBase.h"
#include "ePoint.h"
#include "eRect.h"
#include "eString.h"
#include "eVector3.h"
#include <map>
#include <vector>

namespace KYR
{

class eCamera;
class eCoordSys;
class eGlobeModel;
class eRenderProgram;
class ePass;
class eRenderQueueVisitor;
class eTexture;
struct tagTextGlyph;

// Off-screen target shared by effects that render to a texture.
class eRenderTextureBuffer
{
public:
    eRenderTextureBuffer() {}
    double GetWidth() const { return m_dWidth; }
    double GetHeight() const { return m_dHeight; }
    void SetSize(double w, double h)
    {
        m_dWidth = w;
        m_dHeight = h;
    }

private:
    double m_dWidth = 0.0;
    double m_dHeight = 0.0;
};

class eRenderEngine
{
public:
    eRenderEngine();
    virtual ~eRenderEngine();
    eRenderEngine(eRenderEngine const&) = delete;
    eRenderEngine& operator=(eRenderEngine const&) = delete;

    eCamera* GetCamera();
    eCoordSys* GetCoordSys();
    eGlobeModel* GetGlobeModel();
    eRenderProgram* GetRenderProgram(eString const& name);
    eRenderProgram* GetRenderProgram(ePass* pass);
    eRenderQueueVisitor* GetVisitor();
    // Map units per pixel at the look-at point; the effects pass 1.
    double GetRenderResolution(unsigned char);
    double GetRefResolution();
    eRect2D GetRenderBounds();
    unsigned __int64 GetFrameNumber();
    // 0 gives the default texture; other keys the textures the application set (uploaded
    // on the way out), or null.
    eTexture* GetTexture(unsigned int);
    eTexture* GetDefaultTexture();
    unsigned int GetCircleTexture();
    unsigned int GetPlotLineTexture();
    eRenderTextureBuffer* GetTextureBuffer();
    eVector3T<double>& GetSunPosition();
    // Text to glyphs: eTextContext::GetTextGlyphsFromCache (eText.h), the process's cache.
    unsigned char GetStringTextGlyph(eString const& text, int width, int height,
                                     eString const& font, int style,
                                     std::vector<tagTextGlyph*>& glyphs);
    unsigned char PixelToMap(ePoint const& pixel, ePoint2D& map);
    unsigned char PixelToLogical(ePoint const& pixel, ePoint2D& logical, double height);
    void LogicalToMap(ePoint2D const& logical, ePoint2D& map);

    // Host side: the scene objects the engine serves.
    void SetCamera(eCamera*);
    void SetCoordSys(eCoordSys*);
    void SetGlobeModel(eGlobeModel*);
    void SetSunPosition(eVector3T<double> const&);
    // Places the sun for a date and a time of day (UTC hours).
    void SetSunTime(int year, int month, int day, double hourUtc);
    void AdvanceFrame() { ++m_nFrameNumber; }
    // Files a texture under a key for GetTexture; not owned. Null removes the key.
    void SetTexture(unsigned int key, eTexture* texture);
    // Drops GL objects the engine made (textures); call with the context current.
    void ReleaseResources();

private:
    eCamera* m_pCamera = nullptr;
    eCoordSys* m_pCoordSys = nullptr;
    eGlobeModel* m_pGlobeModel = nullptr;
    eRenderQueueVisitor* m_pVisitor = nullptr;
    eTexture* m_pDefaultTexture = nullptr;
    std::map<unsigned int, eTexture*> m_mapTextures;
    unsigned int m_nCircleTexture = 0;
    unsigned int m_nPlotLineTexture = 0;
    eRenderTextureBuffer m_TextureBuffer;
    eVector3T<double> m_vSunPosition;
    unsigned __int64 m_nFrameNumber = 0;
};

} // namespace KYR
