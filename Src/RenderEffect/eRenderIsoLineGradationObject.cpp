#include "eRenderIsoLineGradationObject.h"

namespace KYR
{

eRenderIsoLineGradationObject::eRenderIsoLineGradationObject()
{
    // Contours float a kilometre above the ground, clear of the terrain drawn under them.
    m_fRelativeHeight = 1000.0f;
}

eRenderIsoLineGradationObject::~eRenderIsoLineGradationObject() {}

void eRenderIsoLineGradationObject::AddLine(std::vector<eVector3T<double>>& points)
{
    std::vector<tagAntiAliasLineData> chunks;
    if (!CreateAntialiasLineData(points, chunks))
        return;
    for (tagAntiAliasLineData& chunk : chunks)
    {
        if (eAntiAliasLineMesh* mesh = MakeMesh(chunk))
        {
            HoldMesh(mesh);
            m_bInitialized = 0;
        }
        chunk = tagAntiAliasLineData();
    }
}

} // namespace KYR
