// The smallest application of the installed package: the Earth and its halo, drawn off
// screen by the reference host and saved as a PNG. Usage: kyr-minimal [OUT.png]
#include "eRenderGlobe.h"
#include "eRenderGlobeHalo.h"
#include "eScene.h"

int main(int argc, char** argv)
{
    KYR::Host::eScene scene(640, 480); // the host's off-screen OpenGL context and camera
    if (!scene.IsReady())
        return 1;
    scene.Engine().SetSunTime(2026, 3, 20, 6.0);        // morning over the Indian Ocean
    scene.Camera().LookAt(60.0, 10.0, 2.6e7, 0.0, 0.0); // lon, lat, distance, heading, pitch
    KYR::eRenderGlobe globe;                            // pictures from the installed resources
    globe.SetUseTexture(1);
    KYR::eRenderGlobeHalo halo;
    halo.SetColor(KYR::ERGBA(120, 180, 255, 230));
    scene.Add(&globe);
    scene.Add(&halo);
    scene.RenderFrame();
    return scene.SavePNG(argc > 1 ? argv[1] : "minimal.png") ? 0 : 1;
}
