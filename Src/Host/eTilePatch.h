// The generic patch that applications hand to the tile objects: n x n quads over the
// unit square, x from the left, y down from the top, position only (float 3 at
// attribute 0). The tile programs stretch it over each tile rectangle.
#pragma once

namespace KYR
{

class eMesh;

namespace Host
{

// A new mesh the caller owns; n is clamped to 1..180 so the indices stay 16-bit.
eMesh* MakeTilePatch(int n);

} // namespace Host
} // namespace KYR
