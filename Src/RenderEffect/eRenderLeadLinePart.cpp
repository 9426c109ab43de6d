#include "eRenderLeadLinePart.h"

namespace KYR
{

eRenderLeadLinePart::eRenderLeadLinePart() {}

eRenderLeadLinePart::~eRenderLeadLinePart() {}

eRect2D eRenderLeadLinePart::GetBounds()
{
    return eRenderPart::GetBounds();
}

void eRenderLeadLinePart::SetPolyline(ePoint2D const& from, ePoint2D const& to)
{
    ePoint2D const points[2] = {from, to};
    int const count = 2;
    eRenderLinePart::SetPolyline(points, &count, 1);
}

void eRenderLeadLinePart::GetPolyline(ePoint2D& from, ePoint2D& to)
{
    if (m_arPoints.size() < 2)
        return;
    from = m_arPoints[0];
    to = m_arPoints[1];
}

} // namespace KYR
