// One polyline of a line grow set: its points, its width in pixels and its base colour. The
// set draws it as a ribbon of that width whatever the distance, and colours it point by
// point as updates arrive.
#pragma once
#include "eGrowShape.h"

namespace KYR
{

class eGrowLine : public eGrowShape
{
public:
    eGrowLine();
    eGrowLine(eGrowLine const&) = default;
    eGrowLine& operator=(eGrowLine const&) = default;
    ~eGrowLine() = default;

    float m_fWidth; // pixels
};

} // namespace KYR
