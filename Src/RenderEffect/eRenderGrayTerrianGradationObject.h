// Terrain tiles that fade between two rasters handed in through an eGradationStrategy.
// A producer may hand textures to the strategy from another thread while it holds this
// object's mutex (GetMutex); the render thread takes them under the same lock.
#pragma once
#include "eRenderGrayTerrainObject.h"
#include "eMutex.h"

namespace KYR
{

class eGradationStrategy;

class eRenderGrayTerrianGradationObject : public eRenderGrayTerrainObject
{
public:
    eRenderGrayTerrianGradationObject();
    eRenderGrayTerrianGradationObject(eRenderGrayTerrianGradationObject const&) = default;
    eRenderGrayTerrianGradationObject&
    operator=(eRenderGrayTerrianGradationObject const&) = default;
    ~eRenderGrayTerrianGradationObject() override;

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
