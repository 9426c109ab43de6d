// A cone posed between two points, its texture flowing from the base to the tip.
#pragma once
#include "eConeGeometry.h"
#include "eRenderObject.h"

namespace KYR
{

class eRenderCone : public eRenderObject
{
public:
    eRenderCone(double radius, double height);
    // Copies share the geometry as well as what the base shares.
    eRenderCone(eRenderCone const&) = default;
    eRenderCone& operator=(eRenderCone const&) = default;
    ~eRenderCone() override;

    Type GetType() override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    void setTexFlowSpeed(double speed) { m_dTexFlowSpeed = speed / 1000.0; }
    double getTexFlowSpeed() { return m_dTexFlowSpeed * 1000.0; }
    // Places the base centre at base and the tip at apex.
    void setPosture(eVector3T<double> apex, eVector3T<double> base);

    // Texture offset shared by all cones; it grows by each cone's speed per frame.
    static double GetTexFlowOffset() { return s_dTexFlowOffset; }
    eConeGeometry* GetConeGeometry() { return m_pConeGeometry; }

    // Shortest-arc rotation from u to v as a double matrix.
    static eMatrix4T<double> ShortestArc(eVector3T<double> u, eVector3T<double> v);

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    eShared<eConeGeometry> m_pConeGeometry;
    double m_dTexFlowSpeed;

private:
    void BuildMesh();
    void BuildMaterial();
    static double s_dTexFlowOffset;
};

} // namespace KYR
