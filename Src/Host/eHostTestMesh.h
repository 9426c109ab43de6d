// The host's own test effect: a lit sphere drawn with the "Color" program in the globe's
// queue group (3), before the effects. It shows
// that a frame runs end to end, and gives tests a known sequence of calls.
#pragma once
#include "eMaterial.h"
#include "eMesh.h"
#include "eRenderable.h"
#include "eVector4.h"

namespace KYR
{
namespace Host
{

class eHostTestMesh : public eRenderable
{
public:
    // A sphere of the given radius around the world origin.
    explicit eHostTestMesh(double radius, int slices = 48, int stacks = 24);
    ~eHostTestMesh() override;
    eHostTestMesh(eHostTestMesh const&) = delete;
    eHostTestMesh& operator=(eHostTestMesh const&) = delete;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    void SetColor(eVector4T<float> const& c) { m_vColor = c; }
    eMesh* GetMesh() { return m_pMesh; }
    eMaterial* GetMaterial() { return m_pMaterial; }

private:
    void BuildSphere(double radius, int slices, int stacks);
    eMesh* m_pMesh;
    eMaterial* m_pMaterial;
    eVector4T<float> m_vColor;
    unsigned char m_bInitialized = 0;
};

} // namespace Host
} // namespace KYR
