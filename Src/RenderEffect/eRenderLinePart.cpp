#include "eRenderLinePart.h"
#include "eMesh.h"
#include "eOpPoints.h"
#include "eRenderEngine.h"
#include "eRenderSystem.h"
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
// A texel well inside the engine's circle texture, where it is opaque white.
float const kCircleInside = 0.22f;
} // namespace

eRenderLinePart::eRenderLinePart()
    : m_bSystemLine(1), m_fLineWidth(1.0f), m_cLineColor(255, 0, 0, 255), m_bLineSmooth(0),
      m_bLineStipple(0), m_nLineFactor(1), m_nLinePattern(0xFFFF)
{
}

eRenderLinePart::~eRenderLinePart() {}

eRenderable::Type eRenderLinePart::GetType()
{
    return eRT_LINE_PART;
}

void eRenderLinePart::SetPolyline(ePoint2D const* points, int const* counts, int rings)
{
    m_arPoints.clear();
    m_arCounts.clear();
    if (counts && rings > 0)
    {
        int total = 0;
        for (int i = 0; i < rings; ++i)
            total += counts[i] > 0 ? counts[i] : 0;
        m_arCounts.assign(counts, counts + rings);
        if (points)
            m_arPoints.assign(points, points + total);
    }
    m_bDirty = 1;
}

void eRenderLinePart::GetPolyline(std::vector<ePoint2D>& points, std::vector<int>& counts)
{
    points.insert(points.end(), m_arPoints.begin(), m_arPoints.end());
    counts.insert(counts.end(), m_arCounts.begin(), m_arCounts.end());
}

eRect2D eRenderLinePart::GetBounds()
{
    return eOpPoints::Bounds(m_arPoints.data(), (int)m_arPoints.size());
}

void eRenderLinePart::CreateBuffer(eRenderEngine* engine)
{
    NewStores();
    eCoordSys* coordSys = engine ? engine->GetCoordSys() : nullptr;
    size_t at = 0;
    for (int count : m_arCounts)
    {
        if (count <= 0)
            continue;
        if (at + (size_t)count > m_arPoints.size())
            break;
        int b = m_pVertexData->GetVertexSize();
        if (b + count > 65536)
            break; // 16-bit indices
        for (int i = 0; i < count; ++i)
            AddVertex(coordSys, m_arPoints[at + i].x, m_arPoints[at + i].y, kCircleInside,
                      kCircleInside, m_cLineColor);
        // Segments between neighbours only: a ring is left open.
        for (int i = 0; i + 1 < count; ++i)
        {
            m_pIndexData->AddIndex((unsigned short)(b + i));
            m_pIndexData->AddIndex((unsigned short)(b + i + 1));
        }
        at += (size_t)count;
    }
    UploadStores();
}

unsigned char eRenderLinePart::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera*,
                                      eViewport*)
{
    if (!BeginDraw(engine, m_cLineColor))
        return 0;
    glLineWidth(m_fLineWidth);
    if (m_bLineSmooth)
        glEnable(GL_LINE_SMOOTH);
    if (m_bLineStipple)
    {
        glEnable(GL_LINE_STIPPLE);
        glLineStipple(m_nLineFactor, m_nLinePattern);
    }
    glBindTexture(GL_TEXTURE_2D, engine->GetCircleTexture());
    rs->DrawIndexed(eOT_LINE_LIST, m_pVertexData, m_pIndexData, false);
    if (m_bLineSmooth)
        glDisable(GL_LINE_SMOOTH);
    if (m_bLineStipple)
    {
        glDisable(GL_LINE_STIPPLE);
        glLineStipple(1, 0xFFFF);
    }
    return 1;
}

} // namespace KYR
