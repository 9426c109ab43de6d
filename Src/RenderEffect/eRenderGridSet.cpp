#include "eRenderGridSet.h"
#include "eMaterial.h"

namespace KYR
{

eRenderGridSet::eRenderGridSet() : m_fGridSize(32.0f), m_nTextSize(16), m_cTextColor(0, 0, 0, 255)
{
    m_strProgram = "PointGridSet";
}

eRenderGridSet::~eRenderGridSet() {}

eRenderable::Type eRenderGridSet::GetType()
{
    return eRT_NONE;
}

unsigned char eRenderGridSet::UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera* camera,
                                            eRenderProgram* program)
{
    if (!program)
        return 0;
    SetWorldMatrix(camera ? camera : m_pCamera, program);
    return 1;
}

unsigned char eRenderGridSet::CreateBuffers()
{
    return 1;
}

unsigned char eRenderGridSet::DestroyBuffers()
{
    return 1;
}

void eRenderGridSet::SetupPass(ePass* pass)
{
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(0);
    pass->SetDepthWriteEnabled(0);
    pass->SetDepthBiasConstant(100.0f);
    pass->SetDepthBiasSlopeScale(100.0f);
    pass->SetLightingEnabled(0);
}

} // namespace KYR
