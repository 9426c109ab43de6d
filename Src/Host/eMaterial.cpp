#include "eMaterial.h"

namespace KYR
{

ePass::ePass() {}

ePass::~ePass() {}

eTechnique::eTechnique() {}

eTechnique::~eTechnique()
{
    for (ePass* pass : m_arPasses)
        delete pass;
}

ePass* eTechnique::CreatePass()
{
    m_arPasses.push_back(new ePass());
    return m_arPasses.back();
}

ePass* eTechnique::GetPass(unsigned short index)
{
    return index < m_arPasses.size() ? m_arPasses[index] : nullptr;
}

eMaterial::eMaterial() {}

eMaterial::~eMaterial()
{
    for (eTechnique* technique : m_arTechniques)
        delete technique;
}

eTechnique* eMaterial::CreateTechnique()
{
    m_arTechniques.push_back(new eTechnique());
    return m_arTechniques.back();
}

eTechnique* eMaterial::GetTechnique(unsigned short index)
{
    return index < m_arTechniques.size() ? m_arTechniques[index] : nullptr;
}

eTechnique* eMaterial::GetBestTechnique()
{
    return GetTechnique(0);
}

} // namespace KYR
