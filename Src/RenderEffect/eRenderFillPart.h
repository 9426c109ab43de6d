// Filled polygons of an annotation, such as the badge behind a label, in pixels around its
// anchor. Each ring is triangulated on its own (concave outlines included) when the part is
// built, and drawn as triangles in the fill colour.
#pragma once
#include "eRenderPart.h"
#include <vector>

namespace KYR
{

class eRenderFillPart : public eRenderPart
{
public:
    eRenderFillPart();
    eRenderFillPart(eRenderFillPart const&) = default;
    eRenderFillPart& operator=(eRenderFillPart const&) = default;
    ~eRenderFillPart() override;

    Type GetType() override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    eRect2D GetBounds() override;

    // `counts` holds the points of each of the `rings` rings; `points` all of them in order.
    void SetPolygon(ePoint2D const* points, int const* counts, int rings);
    // Appends copies of the points and counts to the caller's vectors.
    void GetPolygon(std::vector<ePoint2D>& points, std::vector<int>& counts);
    void SetFillColor(eVector4T<unsigned char> const& color) { m_cFillColor = color; }
    eVector4T<unsigned char> GetFillColor() const { return m_cFillColor; }

protected:
    void CreateBuffer(eRenderEngine*) override;

    eVector4T<unsigned char> m_cFillColor;
    std::vector<ePoint2D> m_arPoints;
    std::vector<int> m_arCounts;

private:
    std::vector<unsigned short> m_arTriangles; // scratch of the triangulation
};

} // namespace KYR
