#include "eRenderFillPart.h"
#include "eMesh.h"
#include "eOpPoints.h"
#include "eRenderEngine.h"
#include "eRenderSystem.h"
#include "eTriangulator.h"
#include <epoxy/gl.h>

namespace KYR
{

namespace
{
// A texel well inside the engine's circle texture, where it is opaque white.
float const kCircleInside = 0.22f;
} // namespace

eRenderFillPart::eRenderFillPart() : m_cFillColor(0, 255, 0, 64) {}

eRenderFillPart::~eRenderFillPart() {}

eRenderable::Type eRenderFillPart::GetType()
{
    return eRT_FILL_PART;
}

void eRenderFillPart::SetPolygon(ePoint2D const* points, int const* counts, int rings)
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

void eRenderFillPart::GetPolygon(std::vector<ePoint2D>& points, std::vector<int>& counts)
{
    points.insert(points.end(), m_arPoints.begin(), m_arPoints.end());
    counts.insert(counts.end(), m_arCounts.begin(), m_arCounts.end());
}

eRect2D eRenderFillPart::GetBounds()
{
    return eOpPoints::Bounds(m_arPoints.data(), (int)m_arPoints.size());
}

void eRenderFillPart::CreateBuffer(eRenderEngine* engine)
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
        ePoint2D const* ring = &m_arPoints[at];
        // A ring too small or flat to fill adds no vertices; the next ring still starts
        // after its points.
        at += (size_t)count;
        eTriangulator::Process(ring, count, m_arTriangles);
        if (m_arTriangles.size() <= 2)
            continue;
        int b = m_pVertexData->GetVertexSize();
        if (b + count > 65536)
            break; // 16-bit indices
        for (int i = 0; i < count; ++i)
            AddVertex(coordSys, ring[i].x, ring[i].y, kCircleInside, kCircleInside, m_cFillColor);
        for (unsigned short index : m_arTriangles)
            m_pIndexData->AddIndex((unsigned short)(b + index));
    }
    UploadStores();
}

unsigned char eRenderFillPart::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera*,
                                      eViewport*)
{
    if (!BeginDraw(engine, m_cFillColor))
        return 0;
    glBindTexture(GL_TEXTURE_2D, engine->GetCircleTexture());
    rs->DrawIndexed(eOT_TRIANGLE_LIST, m_pVertexData, m_pIndexData, false);
    return 1;
}

} // namespace KYR
