// The library's factory: announces the library by name; effects are made by
// constructing the exported classes.
#pragma once
#include "eRenderable.h"

namespace KYR
{

class eRenderEffectFactory : public eRenderableFactory
{
public:
    eRenderEffectFactory() {}
    eRenderEffectFactory(eRenderEffectFactory const&) : eRenderableFactory() {}
    eRenderEffectFactory& operator=(eRenderEffectFactory const&) { return *this; }
    ~eRenderEffectFactory() override;
    eRenderable* CreateRenderable(int) override;
    unsigned char IsSupport(int) const override;
    eString GetName() const override;
};

} // namespace KYR

extern "C" KYR::eRenderableFactory* CreateRenderEffectFactory();
