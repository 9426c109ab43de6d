#include "eRenderGrayColorGradationObject.h"
#include "eGradationStrategy.h"
#include "eProgram.h"

namespace KYR
{

eRenderGrayColorGradationObject::eRenderGrayColorGradationObject()
    : m_pGradationStrategy(nullptr), m_Mutex(1)
{
}

// The textures in the list are freed by the base; those still pending are not.
eRenderGrayColorGradationObject::~eRenderGrayColorGradationObject()
{
    delete m_pGradationStrategy;
    m_pGradationStrategy = nullptr;
}

unsigned char eRenderGrayColorGradationObject::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                                           eCamera* camera, eViewport* viewport)
{
    if (!m_pGradationStrategy) // nothing to fade between yet
        return eRenderGrayColorObject::StartRender(engine, rs, camera, viewport);
    TakeGradationTextures(m_pGradationStrategy, m_Mutex);
    unsigned char started = eRenderGrayColorObject::StartRender(engine, rs, camera, viewport);
    if (eRenderProgram* rp = FetchProgram(engine))
        rp->GetProgram()->Uniform1f(rp->GetUniform()->m_nCustom[16],
                                    (float)m_pGradationStrategy->m_nCurrentTime /
                                        (float)m_pGradationStrategy->m_nTimeStride);
    return started;
}

} // namespace KYR
