// The lines of a contour map: each iso-line, given as a polyline of geographic points, is
// turned into the antialiased strips of its base class and drawn a kilometre above the
// ground, in the base's colour and width.
#pragma once
#include "eRenderAntiAliasingLine.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{

class eRenderIsoLineGradationObject : public eRenderAntiAliasingLine
{
public:
    eRenderIsoLineGradationObject();
    eRenderIsoLineGradationObject(eRenderIsoLineGradationObject const&) = default;
    eRenderIsoLineGradationObject& operator=(eRenderIsoLineGradationObject const&) = default;
    ~eRenderIsoLineGradationObject() override;

    // Adds the line's strips (longitude, latitude in degrees, height in metres); a line
    // added to an initialised object is uploaded before the next draw.
    void AddLine(std::vector<eVector3T<double>>& points);
};

} // namespace KYR
