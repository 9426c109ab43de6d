// Grey-colour tiles that fade between two rasters handed in through an eGradationStrategy.
// A producer may hand textures to the strategy from another thread while it holds this
// object's mutex (GetMutex); the render thread takes them under the same lock.
#pragma once
#include "eRenderGrayColorObject.h"
#include "eMutex.h"

namespace KYR
{

class eGradationStrategy;

class eRenderGrayColorGradationObject : public eRenderGrayColorObject
{
public:
    eRenderGrayColorGradationObject();
    eRenderGrayColorGradationObject(eRenderGrayColorGradationObject const&) = default;
    eRenderGrayColorGradationObject& operator=(eRenderGrayColorGradationObject const&) = default;
    ~eRenderGrayColorGradationObject() override;

    // The object owns the strategy from here on; an earlier one is not freed.
    void SetGradationStrategy(eGradationStrategy* strategy) { m_pGradationStrategy = strategy; }
    eGradationStrategy* GetGradationStrategy() { return m_pGradationStrategy; }
    eMutex& GetMutex() { return m_Mutex; }

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    eGradationStrategy* m_pGradationStrategy;
    eMutex m_Mutex;
};

} // namespace KYR
