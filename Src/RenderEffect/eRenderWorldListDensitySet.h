// Density markers whose vertices carry their world position as two floats (high and low)
// and their geographic position in radians, so that no anchor frame limits the precision:
// markers may lie anywhere on the globe. The program subtracts the reference centre, split
// the same way, before adding the two parts. The ring is that of the list set.
#pragma once
#include "eRenderListDensitySet.h"
#include "eVector3.h"

namespace KYR
{

class eRenderWorldListDensitySet : public eRenderListDensitySet
{
public:
    eRenderWorldListDensitySet();
    eRenderWorldListDensitySet(eRenderWorldListDensitySet const&) = default;
    eRenderWorldListDensitySet& operator=(eRenderWorldListDensitySet const&) = default;
    ~eRenderWorldListDensitySet() override;

    Type GetType() override;
    // Keeps camera and canvas and the anchor as given; no local frame.
    unsigned char Create(eCamera*, double, eCanvas*) override;
    // The world matrix (the identity frame), the opacity, then the reference centre as two
    // floats.
    unsigned char UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera*, eRenderProgram*) override;
    void SetGeometryShader(unsigned char on) override;
    eVertexData* CreateVertexBuffer() override;
    unsigned char UpdateVertexBuffer(int slot, eDensityPoint* point) override;

    // high = (float) v, low = (float) (v - high), the subtraction in double.
    static void DoubleToTwoFloat(double value, float& high, float& low);
    static void DoubleToTwoFloat(eVector3T<double> const& value, eVector3T<float>& high,
                                 eVector3T<float>& low);
};

} // namespace KYR
