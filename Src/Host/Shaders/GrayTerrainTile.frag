#version 420 compatibility
// roles: u_pixelFormat u_textureTrans u_isMask u_maskRect u_projKind u_relativeHeight u_textureRect u_textureScale u_build3D u_exagFactor u_fracture u_tileRect u_isLightning u_lightning u_timeRatio
// Terrain in grey: heights (metres for 16-bit and float rasters, the format's own range for
// bytes and unsigned shorts) shaded under a light from the north-west. Two rasters fade from
// the first to the second by u_timeRatio. With u_isLightning a flash of strength
// u_lightning.z (0..3) lights the ground around (u_lightning.x, u_lightning.y) in degrees.
// The blend strength scales alpha; with u_isMask the mask rectangle cuts the tiles.
#include "TileRaster.glsl"

in vec2 v_geo;

uniform float u_textureTrans;
uniform int u_isMask;
uniform vec4 u_maskRect;
uniform int u_isLightning;
uniform vec4 u_lightning;
uniform float u_timeRatio;

out vec4 fragColor;

float Relief(int raster, vec2 uv)
{
    float raw = RasterRaw(raster, uv);
    if (u_pixelFormat == 16 || u_pixelFormat == 3200)
        return RasterValue(raw) / 8000.0;
    return raw;
}

vec3 Terrain(int raster, vec2 uv)
{
    vec2 texel = 1.0 / vec2(UnitSize(raster));
    float h = Relief(raster, uv);
    float east = Relief(raster, uv + vec2(texel.x, 0.0)) - Relief(raster, uv - vec2(texel.x, 0.0));
    float north = Relief(raster, uv - vec2(0.0, texel.y)) - Relief(raster, uv + vec2(0.0, texel.y));
    vec3 normal = normalize(vec3(-east * 12.0, -north * 12.0, 1.0));
    float shade = max(dot(normal, normalize(vec3(-1.0, 1.0, 1.4))), 0.0);
    float grey = (0.25 + 0.75 * clamp(h, 0.0, 1.0)) * (0.35 + 0.65 * shade);
    return vec3(isnan(h) ? 0.0 : grey);
}

void main()
{
    vec2 uv = RasterUV(v_geo);
    if (!InsideUnitSquare(uv))
        discard;
    int n = RasterCount();
    vec3 rgb = Terrain(0, uv);
    if (n == 2)
        rgb = mix(rgb, Terrain(1, uv), clamp(u_timeRatio, 0.0, 1.0));
    float alpha = u_textureTrans;
    if (u_isLightning != 0)
    {
        vec2 d = v_geo - u_lightning.xy;
        d.x *= cos(radians(v_geo.y));
        float glow = u_lightning.z * exp(-dot(d, d) / 4.0);
        rgb += glow * vec3(0.75, 0.8, 1.0);
    }
    if (u_isMask != 0)
        alpha *= MaskWeight(v_geo, u_maskRect, n);
    if (alpha <= 0.0)
        discard;
    fragColor = vec4(min(rgb, vec3(1.0)), alpha);
}
