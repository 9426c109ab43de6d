// The crawling highlight of an edge bundling path as round markers: the path's points become
// six vertices each once, when the helper is created, and every frame draws five of them in a
// row, one point further every fourth frame, faded from tail to head by the program
// "TracePointLength". The path and its anchor belong to the parent edge object, which must
// outlive the helper.
#pragma once
#include "eRenderable.h"
#include "eShared.h"

namespace KYR
{

class eIndexData;
class eRenderEdgeBundling;
class eTechnique;
class eVertexData;

class eRenderPointBundling : public eRenderable
{
public:
    static int const kVerticesPerPoint = 6;

    explicit eRenderPointBundling(eRenderEdgeBundling* parent);
    eRenderPointBundling(eRenderPointBundling const&) = default;
    eRenderPointBundling& operator=(eRenderPointBundling const&) = default;
    ~eRenderPointBundling() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    // Lays the parent's points out as markers 6 pixels across at the camera's view, and the
    // colour stream beside them.
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

protected:
    friend class eRenderEdgeBundling; // gives a copy of itself its own helper

    unsigned char m_bInitialized;
    eShared<eTechnique> m_pTechnique;
    eShared<eVertexData> m_pExtVertexData;
    eShared<eVertexData> m_pVertexData;
    eShared<eIndexData> m_pIndexData;
    int m_nTraceIndex;
    eRenderEdgeBundling* m_pParent;
};

} // namespace KYR
