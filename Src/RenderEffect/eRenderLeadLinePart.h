// The lead line of a call-out: one segment from the anchor towards the text it points at,
// styled and drawn as any line part. It adds nothing to the annotation's bounds, so that a
// layout built on the bounds wraps the text and not the line that leads to it.
#pragma once
#include "eRenderLinePart.h"

namespace KYR
{

class eRenderLeadLinePart : public eRenderLinePart
{
public:
    eRenderLeadLinePart();
    eRenderLeadLinePart(eRenderLeadLinePart const&) = default;
    eRenderLeadLinePart& operator=(eRenderLeadLinePart const&) = default;
    ~eRenderLeadLinePart() override;

    eRect2D GetBounds() override;

    using eRenderLinePart::GetPolyline;
    using eRenderLinePart::SetPolyline;
    // The segment from `from` to `to`, pixels around the anchor.
    void SetPolyline(ePoint2D const& from, ePoint2D const& to);
    // The segment's two ends; left as they are when the part holds no segment.
    void GetPolyline(ePoint2D& from, ePoint2D& to);
};

} // namespace KYR
