#include "eRenderEffectFactory.h"
#include <new>

namespace KYR
{

eRenderEffectFactory::~eRenderEffectFactory() {}

eRenderable* eRenderEffectFactory::CreateRenderable(int) { return nullptr; }

unsigned char eRenderEffectFactory::IsSupport(int) const { return 0; }

eString eRenderEffectFactory::GetName() const { return eString("KyrSpace RenderEffect"); }

} // namespace KYR

extern "C" KYR::eRenderableFactory* CreateRenderEffectFactory()
{
    return new (std::nothrow) KYR::eRenderEffectFactory();
}
