#version 420 compatibility
// roles: u_pixelFormat u_textureTrans u_isMask u_maskRect u_projKind u_relativeHeight u_textureRect u_textureScale u_build3D u_exagFactor u_fracture u_tileRect u_startValue u_endValue u_resetNormalize u_hasColorTable u_timeRatio
// A raster value in its pixel format, shown inside [u_startValue, u_endValue], scaled to
// 0..1 (over that range with u_resetNormalize, else over its format) and coloured through
// the colour table (grey without one). Two rasters fade from the first to the second by
// u_timeRatio. The blend strength scales alpha; with u_isMask the mask rectangle cuts the
// tiles and the mask picture weighs what is left.
#include "TileRaster.glsl"

in vec2 v_geo;

uniform float u_textureTrans;
uniform int u_isMask;
uniform vec4 u_maskRect;
uniform float u_startValue;
uniform float u_endValue;
uniform int u_resetNormalize;
uniform float u_hasColorTable;
uniform float u_timeRatio;

out vec4 fragColor;

vec4 TableColor(int unit, float t)
{
    ivec2 size = UnitSize(unit);
    // A table runs along its longer side; sample texel centres only.
    float n = float(max(size.x, size.y));
    float s = (t * (n - 1.0) + 0.5) / n;
    return UnitTexel(unit, size.x >= size.y ? vec2(s, 0.5) : vec2(0.5, s));
}

vec4 RasterColor(int raster, int tableUnit, vec2 uv)
{
    float raw = RasterRaw(raster, uv);
    float value = RasterValue(raw);
    if (isnan(value) || value < u_startValue || value > u_endValue)
        return vec4(0.0);
    float t = u_resetNormalize != 0 ? (value - u_startValue) / (u_endValue - u_startValue)
                                    : FormatNormalised(raw);
    t = clamp(t, 0.0, 1.0);
    return u_hasColorTable > 0.5 ? TableColor(tableUnit, t) : vec4(t, t, t, 1.0);
}

void main()
{
    vec2 uv = RasterUV(v_geo);
    if (!InsideUnitSquare(uv))
        discard;
    int n = RasterCount();
    vec4 color = RasterColor(0, n, uv);
    if (n == 2)
    {
        // Fade with weights on alpha, so that a value shown in only one raster keeps its
        // colour and only fades in or out.
        vec4 later = RasterColor(1, n, uv);
        float r = clamp(u_timeRatio, 0.0, 1.0);
        float a = mix(color.a, later.a, r);
        vec3 rgb = color.rgb * color.a * (1.0 - r) + later.rgb * later.a * r;
        color = vec4(a > 0.0 ? rgb / a : rgb, a);
    }
    color.a *= u_textureTrans;
    if (u_isMask != 0)
        color.a *= MaskWeight(v_geo, u_maskRect, n + 1);
    if (color.a <= 0.0)
        discard;
    fragColor = color;
}
