#include "eRenderGrayTerrainObject.h"
#include "GLut.h"
#include "eCamera.h"
#include "eMathEngine.h"
#include "eProgram.h"
#include "eTime.h"
#include <cstdlib>

namespace KYR
{

namespace
{
// The flash formula divides by 32767, the generator's range where it was written; keep the
// draw in those 15 bits so that the flash stays inside its 40-degree square.
double Draw15()
{
    return (double)(std::rand() & 0x7FFF);
}
} // namespace

eRenderGrayTerrainObject::eRenderGrayTerrainObject() : m_bIsLightning(0)
{
    std::srand(eTime::GetMillisecond());
}

unsigned char eRenderGrayTerrainObject::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                                    eCamera* camera, eViewport* viewport)
{
    unsigned char started = eRenderTileObject::StartRender(engine, rs, camera, viewport);
    // No colour table in this branch: the mask sits right behind the rasters.
    if (s_pMaskTexture)
        UploadAndBind(s_pMaskTexture, m_arTextures.size());
    eRenderProgram* rp = FetchProgram(engine);
    if (!rp)
        return started;
    eShaderUniform* u = rp->GetUniform();
    rp->GetProgram()->Uniform1i(u->m_nCustom[12], m_bIsLightning);
    if (m_bIsLightning)
    {
        eVector3T<double> const& at = camera->GetLookAtPosition();
        eVector3T<double> geo = eMathEngine::CartesianToSpherical(at.x, at.y, at.z);
        double lon = geo.x * 57.29577951308232, lat = geo.y * 57.29577951308232;
        double left = lon - 20.0, top = lat + 20.0, right = lon + 20.0, bottom = lat - 20.0;
        double x = Draw15() * (right - left) / 32767.0 + left;
        double y = Draw15() * (top - bottom) / 32767.0 + bottom;
        double strength = Draw15() * 3.0 / 32767.0 + 0.0;
        GLut::Uniform4f(u->m_nCustom[13], (float)x, (float)y, (float)strength, 0.0f);
    }
    return started;
}

} // namespace KYR
