// One selected point of a scatter set: its slot, and the point as drawn in the overlay.
#pragma once
#include "eScatterPoint.h"

namespace KYR
{

class eChoiceObject
{
public:
    eChoiceObject();
    eChoiceObject(int slot, eScatterPoint const& p);

    int index;           // slot in the point buffer
    eScatterPoint point; // the point with its id replaced by the choice type
};

} // namespace KYR
