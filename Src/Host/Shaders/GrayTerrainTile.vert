#version 420 compatibility
// roles: u_pixelFormat u_textureTrans u_isMask u_maskRect u_projKind u_relativeHeight u_textureRect u_textureScale u_build3D u_exagFactor u_fracture u_tileRect u_isLightning u_lightning u_timeRatio
#include "GeoProject.glsl"
#include "TileRaster.glsl"
#include "TilePatch.glsl"

void main()
{
    PlacePatch();
}
