// What a line and a region of the grow sets have in common: a base colour, the points in the
// set's spatial reference, and the place that the set gave the shape's vertices and indices
// in its buffers when it was added. A plain record: the set copies it when it is added.
#pragma once
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eGrowShape
{
public:
    eGrowShape();
    eGrowShape(eGrowShape const&) = default;
    eGrowShape& operator=(eGrowShape const&) = default;
    ~eGrowShape() = default;

    unsigned char m_bValid; // set on construction; drawing does not read it
    // Fills the colour stream when the shape is added; the colours of its points are then
    // rewritten one by one.
    eVector4T<unsigned char> m_cColor;
    std::vector<eVector4T<double>> m_arPositions;
    // Set by the set when the shape is added: where its vertices and indices lie.
    int m_nFirstVertex;
    int m_nVertexCount;
    int m_nFirstIndex;
    int m_nIndexCount;
};

} // namespace KYR
