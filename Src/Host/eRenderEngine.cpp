#include "eRenderEngine.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eMaterial.h"
#include "eProgram.h"
#include "eProgramLibrary.h"
#include "eRenderQueueVisitor.h"
#include "eSunPosition.h"
#include "eText.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>
#include <vector>

namespace KYR
{

namespace
{
// Earth circumference over 256 pixels: the resolution of level 0.
double const kLevel0Resolution = 40075016.68557849 / 256.0;

unsigned int MakeRGBATexture(int w, int h, std::vector<unsigned char> const& pixels)
{
    GLuint id = 0;
    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, w, h, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_2D, 0);
    return id;
}

// White disc with a soft rim, for round point sprites.
std::vector<unsigned char> CirclePixels(int size)
{
    std::vector<unsigned char> px((size_t)size * size * 4, 255);
    double r = size * 0.5;
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
        {
            double d = std::hypot(x + 0.5 - r, y + 0.5 - r);
            double a = std::min(1.0, std::max(0.0, r - d));
            px[((size_t)y * size + x) * 4 + 3] = (unsigned char)std::lround(a * 255.0);
        }
    return px;
}

// One dash period along s: opaque for the first half, clear for the second.
std::vector<unsigned char> PlotLinePixels(int size)
{
    std::vector<unsigned char> px((size_t)size * 4, 255);
    for (int x = size / 2; x < size; ++x)
        px[(size_t)x * 4 + 3] = 0;
    return px;
}
} // namespace

eRenderEngine::eRenderEngine() { m_vSunPosition = Host::SunWorldPosition(2026, 3, 20, 12.0); }

eRenderEngine::~eRenderEngine()
{
    delete m_pVisitor;
    delete m_pDefaultTexture;
}

eCamera* eRenderEngine::GetCamera() { return m_pCamera; }
eCoordSys* eRenderEngine::GetCoordSys() { return m_pCoordSys; }
eGlobeModel* eRenderEngine::GetGlobeModel() { return m_pGlobeModel; }

eRenderProgram* eRenderEngine::GetRenderProgram(eString const& name)
{
    return Host::eProgramLibrary::Get().Find(name);
}

eRenderProgram* eRenderEngine::GetRenderProgram(ePass* pass)
{
    return pass ? GetRenderProgram(pass->GetProgram()) : nullptr;
}

eRenderQueueVisitor* eRenderEngine::GetVisitor()
{
    if (!m_pVisitor)
        m_pVisitor = new eRenderQueueVisitor();
    return m_pVisitor;
}

double eRenderEngine::GetRenderResolution(unsigned char)
{
    if (!m_pCamera)
        return kLevel0Resolution;
    return m_pCamera->DistanceToResolution(m_pCamera->GetDistance());
}

double eRenderEngine::GetRefResolution()
{
    return m_pCoordSys ? m_pCoordSys->GetRefResolution() : kLevel0Resolution;
}

eRect2D eRenderEngine::GetRenderBounds()
{
    return m_pCamera ? m_pCamera->GetRenderBounds() : eRect2D();
}

unsigned __int64 eRenderEngine::GetFrameNumber() { return m_nFrameNumber; }

eTexture* eRenderEngine::GetTexture(unsigned int id)
{
    if (id == 0)
        return GetDefaultTexture();
    auto it = m_mapTextures.find(id);
    if (it == m_mapTextures.end())
        return nullptr;
    it->second->CreateTexture();
    return it->second;
}

void eRenderEngine::SetTexture(unsigned int key, eTexture* texture)
{
    if (texture)
        m_mapTextures[key] = texture;
    else
        m_mapTextures.erase(key);
}

eTexture* eRenderEngine::GetDefaultTexture()
{
    if (!m_pDefaultTexture)
    {
        unsigned char white[4] = {255, 255, 255, 255};
        eImageData* image = new eImageData();
        image->Allocate(1, 1, 32);
        std::copy(white, white + 4, image->m_pData);
        m_pDefaultTexture = eTextureManager::GetSingleton().CreateTexture();
        m_pDefaultTexture->SetAutoRelease(1); // the texture owns and frees the picture
        m_pDefaultTexture->SetImageData(image);
    }
    m_pDefaultTexture->CreateTexture();
    return m_pDefaultTexture;
}

unsigned int eRenderEngine::GetCircleTexture()
{
    if (!m_nCircleTexture)
        m_nCircleTexture = MakeRGBATexture(64, 64, CirclePixels(64));
    return m_nCircleTexture;
}

unsigned int eRenderEngine::GetPlotLineTexture()
{
    if (!m_nPlotLineTexture)
        m_nPlotLineTexture = MakeRGBATexture(32, 1, PlotLinePixels(32));
    return m_nPlotLineTexture;
}

eRenderTextureBuffer* eRenderEngine::GetTextureBuffer() { return &m_TextureBuffer; }

eVector3T<double>& eRenderEngine::GetSunPosition() { return m_vSunPosition; }

unsigned char eRenderEngine::GetStringTextGlyph(eString const& text, int width, int height,
                                                eString const& font, int style,
                                                std::vector<tagTextGlyph*>& glyphs)
{
    eTextContext context;
    return context.GetTextGlyphsFromCache(text, width, height, font, style, glyphs);
}

unsigned char eRenderEngine::PixelToLogical(ePoint const& pixel, ePoint2D& logical, double height)
{
    if (!m_pCamera || !m_pCoordSys)
        return 0;
    eVector3T<double> origin, dir, hit;
    m_pCamera->PickingRay(pixel.x, pixel.y, origin, dir);
    if (!m_pCamera->IntersectGlobe(origin, dir, hit, height))
        return 0;
    m_pCoordSys->WorldToLogical(m_pCamera->GetSceneMode(), hit, logical);
    return 1;
}

unsigned char eRenderEngine::PixelToMap(ePoint const& pixel, ePoint2D& map)
{
    ePoint2D logical;
    if (!PixelToLogical(pixel, logical, 0.0))
        return 0;
    LogicalToMap(logical, map);
    return 1;
}

void eRenderEngine::LogicalToMap(ePoint2D const& logical, ePoint2D& map)
{
    if (!m_pCoordSys)
    {
        map = logical;
        return;
    }
    ePoint2D in = logical;
    m_pCoordSys->LogicalToMapPoint(in, map);
}

void eRenderEngine::SetCamera(eCamera* camera) { m_pCamera = camera; }
void eRenderEngine::SetCoordSys(eCoordSys* coordSys) { m_pCoordSys = coordSys; }
void eRenderEngine::SetGlobeModel(eGlobeModel* model) { m_pGlobeModel = model; }
void eRenderEngine::SetSunPosition(eVector3T<double> const& p) { m_vSunPosition = p; }

void eRenderEngine::SetSunTime(int year, int month, int day, double hourUtc)
{
    m_vSunPosition = Host::SunWorldPosition(year, month, day, hourUtc);
}

void eRenderEngine::ReleaseResources()
{
    if (m_nCircleTexture)
        glDeleteTextures(1, &m_nCircleTexture);
    if (m_nPlotLineTexture)
        glDeleteTextures(1, &m_nPlotLineTexture);
    m_nCircleTexture = m_nPlotLineTexture = 0;
    delete m_pDefaultTexture;
    m_pDefaultTexture = nullptr;
}

} // namespace KYR
