#include "eRenderGrayColorGradationObject.h"
#include "eGradationStrategy.h"
#include "eProgram.h"

namespace KYR
{

eRenderGrayColorGradationObject::eRenderGrayColorGradationObject()
    : m_Mutex(new eMutex(1)), m_pTakenTextures(new eGradationTextures())
{
}

// Strategy, lock and taken textures go with their last holders; textures still pending in
// the strategy were never taken and are not freed.
eRenderGrayColorGradationObject::~eRenderGrayColorGradationObject()
{
    m_pGradationStrategy.Reset();
    m_pTakenTextures.Reset();
    m_Mutex.Reset();
}

void eRenderGrayColorGradationObject::SetGradationStrategy(eGradationStrategy* strategy)
{
    if (strategy == m_pGradationStrategy.Get())
        return;
    m_pGradationStrategy.Reset(strategy);
    m_pTakenTextures.Reset(new eGradationTextures());
}

unsigned char eRenderGrayColorGradationObject::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                                           eCamera* camera, eViewport* viewport)
{
    if (!m_pGradationStrategy) // nothing to fade between yet
        return eRenderGrayColorObject::StartRender(engine, rs, camera, viewport);
    TakeGradationTextures(m_pGradationStrategy, *m_Mutex, *m_pTakenTextures);
    unsigned char started = eRenderGrayColorObject::StartRender(engine, rs, camera, viewport);
    if (eRenderProgram* rp = FetchProgram(engine))
        rp->GetProgram()->Uniform1f(rp->GetUniform()->m_nCustom[16],
                                    (float)m_pGradationStrategy->m_nCurrentTime /
                                        (float)m_pGradationStrategy->m_nTimeStride);
    return started;
}

} // namespace KYR
