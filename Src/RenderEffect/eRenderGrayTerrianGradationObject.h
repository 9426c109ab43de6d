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
    // Copies share the strategy, its lock and the textures taken from it; the last holder
    // of each frees it.
    eRenderGrayTerrianGradationObject(eRenderGrayTerrianGradationObject const&) = default;
    eRenderGrayTerrianGradationObject&
    operator=(eRenderGrayTerrianGradationObject const&) = default;
    ~eRenderGrayTerrianGradationObject() override;

    // The object takes the strategy. It no longer holds an earlier one, which goes with its
    // last holder (a copy may still hold it), and the textures it took from it with it.
    void SetGradationStrategy(eGradationStrategy* strategy);
    eGradationStrategy* GetGradationStrategy() { return m_pGradationStrategy; }
    // The lock a producer holds while it hands textures to the strategy; shared by copies.
    eMutex& GetMutex() { return *m_Mutex; }

protected:
    unsigned char StartRender(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;

    eShared<eGradationStrategy> m_pGradationStrategy;
    eShared<eMutex> m_Mutex;
    eShared<eGradationTextures> m_pTakenTextures;
};

} // namespace KYR
