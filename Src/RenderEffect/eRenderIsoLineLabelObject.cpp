#include "eRenderIsoLineLabelObject.h"
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eGeometry.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eRenderSystem.h"
#include "eText.h"
#include <epoxy/gl.h>
#include <cmath>
#include <vector>

namespace KYR
{

namespace
{
char const* const kSource = "Src/RenderEffect/eRenderIsoLineLabelObject";
// Centred on the anchor, standing on it: the text sits on top of the line.
int const kLabelAlign = eGeoTextStyle::eTA_CENTER | eGeoTextStyle::eTA_BOTTOM;
// Labels float this high, above the lines and the terrain under them.
double const kLabelHeight = 10000.0;
// Labels on the globe are drawn at this share of their size on the map.
double const kGlobeLabelScale = 0.762;
} // namespace

char const* const eRenderIsoLineLabelObject::kAlphabet = "0123456789.+-";

eRenderIsoLineLabelObject::eRenderIsoLineLabelObject()
    : m_bInitialized(0), m_LabelColor(255, 255, 0, 255), m_nLabelSize(24), m_pPass(new ePass())
{
    m_pPass->SetProgram("TexcoordColor");
    m_pPass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    m_pPass->SetDepthCheckEnabled(1);
    m_pPass->SetDepthWriteEnabled(0);
}

eRenderIsoLineLabelObject::~eRenderIsoLineLabelObject() {}

eRenderable::Type eRenderIsoLineLabelObject::GetType()
{
    return eRT_NONE;
}

unsigned char eRenderIsoLineLabelObject::Initialize(eRenderEngine* engine)
{
    if (m_bInitialized)
        return 1;
    m_bInitialized = 1;
    std::vector<tagTextGlyph*> glyphs;
    engine->GetStringTextGlyph(kAlphabet, m_nLabelSize, m_nLabelSize, "", 0, glyphs);
    for (size_t i = 0; kAlphabet[i] && i < glyphs.size(); ++i)
        m_charGlyphs[kAlphabet[i]] = glyphs[i];
    return 1;
}

unsigned char eRenderIsoLineLabelObject::UnInitialize(eRenderEngine*)
{
    m_bInitialized = 0;
    RemoveAllObject();
    return 1;
}

void eRenderIsoLineLabelObject::RemoveAllObject()
{
    m_charGlyphs.clear();
}

unsigned char eRenderIsoLineLabelObject::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                           eRenderQueue* queue)
{
    if (IsVisible())
        queue->AddOverlayRenderable(m_pPass, this);
    return 1;
}

void eRenderIsoLineLabelObject::SetIsoLines(eArray<eArray<ePoint2D>> lines, eArray<double> values)
{
    m_arLines = lines;
    m_arValues = values;
    CalculateLabelPosition();
}

void eRenderIsoLineLabelObject::SetLabelColor(unsigned int color)
{
    m_LabelColor = eVector4T<unsigned char>(EREDVAL((int)color), EGREENVAL((int)color),
                                            EBLUEVAL((int)color), EALPHAVAL((int)color));
}

double eRenderIsoLineLabelObject::CalculateAngle(ePoint2D a, ePoint2D b)
{
    double angle = std::atan2(b.y - a.y, b.x - a.x) * eMathEngine::RAD_TO_DEG;
    if (angle > 90.0)
        angle -= 180.0;
    if (angle < -90.0)
        angle += 180.0;
    return angle;
}

ePoint2D eRenderIsoLineLabelObject::GetLineTopPnt(eArray<ePoint2D> const& line, int& prev,
                                                  int& next)
{
    int best = 0;
    ePoint2D top = line[0];
    int const n = line.GetSize();
    for (int i = 1; i < n; ++i)
        if (line[i].y > top.y)
        {
            top = line[i];
            best = i;
        }
    prev = best - 1;
    next = best + 1;
    // The first and last points of a closed line are the same, so the walk steps over the
    // seam: from the first point back to the one before the last, from the last to the second.
    if (prev < 0)
        prev += n - 1;
    if (next > n - 1)
        next -= n - 1;
    return top;
}

void eRenderIsoLineLabelObject::CalculateLabelPosition()
{
    int const nLineCount = m_arLines.GetSize();
    if (m_arValues.GetSize() != nLineCount)
        Eassert("m_arValues.GetSize() == nLineCount", kSource, 258);
    for (int i = 0; i < nLineCount; ++i)
    {
        eArray<ePoint2D> const& p = m_arLines[i];
        int const m = p.GetSize();
        if (m <= 2)
            continue;
        if (i >= m_arValues.GetSize())
        {
            // A line without a value ends the walk.
            Eassert("invalid vector<T> subscript", kSource, 258);
            return;
        }
        eString text;
        text.Format("%.2f", m_arValues[i]);
        if (!(p[0] == p[m - 1]))
        {
            m_arLabels.Add(text);
            m_arPositons.Add(p[0]);
            m_arAngles.Add(CalculateAngle(p[0], p[2]));
            m_arLabels.Add(text);
            m_arPositons.Add(p[m - 1]);
            m_arAngles.Add(CalculateAngle(p[m - 3], p[m - 1]));
        }
        else
        {
            int prev = 0, next = 0;
            ePoint2D top = GetLineTopPnt(p, prev, next);
            m_arLabels.Add(text);
            m_arPositons.Add(top);
            m_arAngles.Add(CalculateAngle(p[prev], p[next]));
        }
    }
}

unsigned char eRenderIsoLineLabelObject::Render(eRenderEngine* engine, eRenderSystem* rs,
                                                eCamera* camera, eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    if (eRenderQueueVisitor* visitor = engine->GetVisitor())
        visitor->BeginPass(m_pPass);

    int const nCount = m_arLabels.GetSize();
    if (m_arAngles.GetSize() != nCount)
        Eassert("m_arAngles.GetSize() == nCount", kSource, 93);
    if (m_arPositons.GetSize() != nCount)
        Eassert("m_arPositons.GetSize() == nCount", kSource, 94);

    eSceneMode const mode = camera->GetSceneMode();
    eCoordSys* coordSys = engine->GetCoordSys();
    eRenderProgram* rp = engine->GetRenderProgram("TexcoordColor");
    if (!coordSys || !rp)
        return 1;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();

    // Glyph quads come out in pixels; metres per pixel at the look-at point make them the
    // label size on the screen there, whatever the zoom.
    double scale = engine->GetRenderResolution(1);
    if (mode == eSM_GLOBE)
        scale *= kGlobeLabelScale;
    eVector3T<double> const& centre = camera->GetReferenceCenter();

    for (int i = 0; i < nCount && i < m_arAngles.GetSize() && i < m_arPositons.GetSize(); ++i)
    {
        eString const& text = m_arLabels[i];
        std::vector<tagTextGlyph*> glyphs;
        bool complete = true;
        for (int c = 0; c < text.GetLength(); ++c)
        {
            auto iter = m_charGlyphs.find(text.GetAt(c));
            if (iter == m_charGlyphs.end() || !iter->second)
            {
                Eassert("iter != m_charGlyphs.end()", kSource, 107);
                complete = false;
                break;
            }
            glyphs.push_back(iter->second);
        }
        if (!complete)
            continue;

        eVertexData vertices;
        eIndexData indices;
        std::vector<int> starts;
        eGLCanvas::Text(&vertices, &indices, starts, mode, coordSys, ePoint2D(0.0, 0.0), 1.0,
                        glyphs, m_LabelColor, kLabelAlign, eVector3T<double>(0.0, 0.0, 0.0));

        ePoint2D map, logical;
        if (!coordSys->GeoToMap(m_arPositons[i], map))
            continue; // outside the projection
        coordSys->MapToLogicalPoint(map, logical);
        eVector3T<double> w;
        coordSys->LogicalToWorld(mode, logical, w, kLabelHeight);

        double const a = m_arAngles[i] * eMathEngine::DEG_TO_RAD;
        eMatrix4T<double> world;
        if (mode == eSM_GLOBE)
        {
            // The label's plane is the tangent plane at its anchor: its x runs east, its y
            // north, its z up (the world's z is the polar axis).
            ePoint2D geo;
            coordSys->MapToGeo(map, geo);
            double const lat = geo.y * eMathEngine::DEG_TO_RAD;
            double const lon = geo.x * eMathEngine::DEG_TO_RAD;
            double const quarter = eMathEngine::PI * 0.5;
            world = eMatrix4T<double>::Translation(w - centre) *
                    eMatrix4T<double>::RotationZ(lon + quarter) *
                    eMatrix4T<double>::RotationX(quarter - lat) * eMatrix4T<double>::RotationZ(a) *
                    eMatrix4T<double>::Scale(scale, scale, 1.0) *
                    eMatrix4T<double>(camera->GetRelativeWorldMatrix());
        }
        else
        {
            double const c = std::cos(a), s = std::sin(a);
            world.At(0, 0) = c * scale;
            world.At(1, 0) = s * scale;
            world.At(0, 1) = -s * scale;
            world.At(1, 1) = c * scale;
            world.At(0, 3) = w.x - centre.x;
            world.At(1, 3) = w.y - centre.y;
            world.At(2, 3) = w.z - centre.z;
        }
        eMatrix4T<float> const worldFloat(world);
        p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, worldFloat.Ptr());
        p->UniformMatrix4(u->m_nViewMatrix, 1, 0, camera->GetRelativeViewMatrix().Ptr());

        vertices.Create();
        indices.Create();
        GLut::ActiveTexture(GL_TEXTURE0);
        for (size_t k = 0; k < glyphs.size() && k < starts.size(); ++k)
        {
            glBindTexture(GL_TEXTURE_2D, glyphs[k]->m_nTextureID);
            rs->DrawIndexRange(eOT_TRIANGLE_STRIP, &vertices, &indices, 4, starts[k], false);
        }
        glBindTexture(GL_TEXTURE_2D, 0);
        vertices.Delete();
        indices.Delete();
    }
    return 1;
}

} // namespace KYR
