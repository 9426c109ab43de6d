// Scene "host": the host's own lit test sphere of the Earth's size, seen from space.
#include "Gallery.h"
#include "eHostTestMesh.h"

namespace
{

bool BuildHost(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    scene.SetClearColor(0.02f, 0.02f, 0.06f, 1.0f);
    scene.Camera().LookAt(100.0, 30.0, 2.2e7, 0.0, 0.0);
    auto* mesh = keep.Keep(new KYR::Host::eHostTestMesh(6378137.0));
    scene.Add(mesh);
    return true;
}

Gallery::Register s_host({"host",
                          "the host's lit test sphere in globe mode",
                          KYR::eSM_GLOBE,
                          KYR::PJ_PLATE_CARREE,
                          {},
                          BuildHost});

} // namespace
