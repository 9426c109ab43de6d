// Scene "isosurface": the storm cell of the volume scenes as three nested translucent
// surfaces, cut from the same field by marching cubes at three values: the cloud (0.28), the
// rain (0.5) and the hail cores (0.75). They stand over the same rectangle of Oklahoma, drawn
// 40 km tall, and are seen from the same place as the volume, in the afternoon sun. They are
// added innermost first, the order in which plain blending would hide the inner ones; the
// order-independent composition shows each through the one around it.
#include "Gallery.h"
#include "GalleryGeo.h"
#include "MarchingCubes.h"
#include "StormField.h"
#include "eRenderIsoSurface3D.h"

namespace
{

// The volume scenes' domain: 180 km square around (97.5 W, 35.4 N), 16 km of atmosphere
// drawn 40 km tall.
double const kCentreLon = -97.5, kCentreLat = 35.4;
double const kSideMetres = Storm::kDomainKm * 1000.0;
double const kDrawnTop = 40000.0;
// Samples: a cell of 1.25 km across, 0.83 km of drawn height.
int const kCellsAcross = 144, kCellsUp = 48;

struct Shell
{
    float level;
    double colour[3];
    float alpha;
};

// Outermost last; the colours of a radar's reflectivity scale, from pale cloud to hail.
Shell const kShells[] = {{0.75f, {0.95, 0.15, 0.45}, 0.75f},
                         {0.5f, {0.95, 0.8, 0.1}, 0.5f},
                         {0.28f, {0.45, 0.7, 1.0}, 0.35f}};

Gallery::ScalarGrid StormGrid()
{
    Gallery::ScalarGrid grid;
    grid.nx = grid.ny = kCellsAcross;
    grid.nz = kCellsUp;
    grid.cell[0] = grid.cell[1] = kSideMetres / kCellsAcross;
    grid.cell[2] = kDrawnTop / kCellsUp;
    grid.values.resize((size_t)grid.nx * grid.ny * grid.nz);
    size_t n = 0;
    for (int k = 0; k < grid.nz; ++k)
        for (int j = 0; j < grid.ny; ++j)
            for (int i = 0; i < grid.nx; ++i)
                grid.values[n++] = (float)Storm::Value(i, j, k, grid.nx, grid.ny, grid.nz);
    return grid;
}

bool BuildIsoSurface(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    Gallery::AddEarth(scene, keep, kCentreLon - 72.0, 12.0);
    scene.Camera().LookAt(kCentreLon + 0.1, kCentreLat + 0.05, 250000.0, 25.0, 72.0, 16000.0);

    Gallery::ScalarGrid const grid = StormGrid();
    for (Shell const& shell : kShells)
    {
        using Mesh = std::vector<KYR::tagNormalTextureVertex3r>;
        Mesh* mesh = keep.Keep(new Mesh(Gallery::MarchingCubes(grid, shell.level)));
        auto* surface =
            keep.Keep(new KYR::eRenderIsoSurface3D(mesh->data(), (int)mesh->size(), nullptr, 0));
        // The mesh's ground centre stands on the rectangle's centre.
        surface->SetTranform(KYR::eVector3T<double>(0.5 * kSideMetres, 0.5 * kSideMetres, 0.0),
                             KYR::eVector3T<double>(kCentreLon, kCentreLat, 0.0), 1.0);
        surface->SetMaterialDiffuse(
            KYR::eVector3T<double>(shell.colour[0], shell.colour[1], shell.colour[2]));
        surface->SetMaterialSpecular(KYR::eVector3T<double>(0.25, 0.25, 0.25));
        surface->SetMaterialShinnes(24.0f);
        surface->SetAlpha(shell.alpha);
        scene.Add(surface, surface->GetStrategy());
    }
    return true;
}

Gallery::Register s_isosurface({"isosurface",
                                "the storm cell as nested translucent iso-surfaces: cloud, rain, "
                                "hail cores",
                                KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE, Gallery::WithEarth({}),
                                BuildIsoSurface});

} // namespace
