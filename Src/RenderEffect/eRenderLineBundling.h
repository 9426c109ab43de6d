// The crawling highlight of an edge bundling path as a run of line segments: each pair of
// neighbouring points becomes a stroke of eighteen vertices once, when the helper is created,
// and every frame draws five strokes in a row, one segment further every fourth frame, faded
// from tail to head by the program "TraceLineLength". An application adds it beside the edge
// object; the path and its anchor belong to that parent, which must outlive the helper.
#pragma once
#include "eRenderable.h"
#include "eShared.h"

namespace KYR
{

class eIndexData;
class eRenderEdgeBundling;
class eTechnique;
class eVertexData;

class eRenderLineBundling : public eRenderable
{
public:
    static int const kVerticesPerSegment = 18;

    explicit eRenderLineBundling(eRenderEdgeBundling* parent);
    eRenderLineBundling(eRenderLineBundling const&) = default;
    eRenderLineBundling& operator=(eRenderLineBundling const&) = default;
    ~eRenderLineBundling() override;

    Type GetType() override;
    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    // Lays the segments between the parent's points out as strokes 5 pixels wide, and the
    // colour stream beside them. A path of one point has no segment.
    unsigned char Create(eCamera*, double, eCanvas*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

protected:
    unsigned char m_bInitialized;
    eShared<eTechnique> m_pTechnique;
    eShared<eVertexData> m_pExtVertexData;
    eShared<eVertexData> m_pVertexData;
    eShared<eIndexData> m_pIndexData;
    int m_nTraceIndex;
    eRenderEdgeBundling* m_pParent;
};

} // namespace KYR
