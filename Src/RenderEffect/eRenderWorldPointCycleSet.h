// Pulses whose vertices carry their world position as two floats (high and low) and their
// geographic position in radians, so that no anchor frame limits the precision: markers
// may lie anywhere on the globe. The program subtracts the reference centre, split the
// same way, before adding the two parts.
#pragma once
#include "eRenderPointCycleSet.h"
#include "eVector3.h"

namespace KYR
{

class eRenderWorldPointCycleSet : public eRenderPointCycleSet
{
public:
    eRenderWorldPointCycleSet();
    eRenderWorldPointCycleSet(eRenderWorldPointCycleSet const&) = default;
    eRenderWorldPointCycleSet& operator=(eRenderWorldPointCycleSet const&) = default;
    ~eRenderWorldPointCycleSet() override;

    Type GetType() override;
    // Keeps camera and canvas and the anchor's world position; no local frame.
    unsigned char Create(eCamera*, double, eCanvas*) override;
    // The world matrix (the identity frame), then the reference centre as two floats.
    unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*) override;
    unsigned char AddCyclePoint(eCyclePoint* point) override;

    // high = (float) v, low = (float) (v - high), the subtraction in double.
    static void DoubleToTwoFloat(double value, float& high, float& low);
    static void DoubleToTwoFloat(eVector3T<double> const& value, eVector3T<float>& high,
                                 eVector3T<float>& low);

protected:
    // Creates either store if it is missing, with the layout of the world vertices.
    void CreateVertexBuffer();
};

} // namespace KYR
