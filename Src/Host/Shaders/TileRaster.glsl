// Rasters of the tile objects (GrayColorTile, GrayTerrainTile). The effect binds its rasters
// on units 0 upward, then (grey colour) the colour table and the mask, or (terrain) the mask.
// It sends no sampler units, so the samplers are fixed to units 0..3 here. The raster count
// n is read from what is bound: a second raster has the size of the first; anything else on
// unit 1 belongs behind the rasters.
layout(binding = 0) uniform sampler2D u_unit0;
layout(binding = 1) uniform sampler2D u_unit1;
layout(binding = 2) uniform sampler2D u_unit2;
layout(binding = 3) uniform sampler2D u_unit3;

uniform int u_pixelFormat;   // 8 ubyte, 16 short, 17 ushort, 3200 float
uniform vec4 u_textureRect;  // left, top, width, height covered by the rasters
uniform float u_textureScale;
uniform int u_fracture;      // stepped rasters: nearest texel, no filtering

ivec2 UnitSize(int unit)
{
    if (unit == 0)
        return textureSize(u_unit0, 0);
    if (unit == 1)
        return textureSize(u_unit1, 0);
    if (unit == 2)
        return textureSize(u_unit2, 0);
    if (unit == 3)
        return textureSize(u_unit3, 0);
    return ivec2(0);
}

bool UnitBound(int unit)
{
    ivec2 s = UnitSize(unit);
    return s.x > 0 && s.y > 0;
}

vec4 UnitTexel(int unit, vec2 uv)
{
    if (unit == 0)
        return textureLod(u_unit0, uv, 0.0);
    if (unit == 1)
        return textureLod(u_unit1, uv, 0.0);
    if (unit == 2)
        return textureLod(u_unit2, uv, 0.0);
    return textureLod(u_unit3, uv, 0.0);
}

int RasterCount()
{
    return UnitBound(1) && UnitSize(1) == UnitSize(0) ? 2 : 1;
}

// Tile coordinates (scaled by u_textureScale) to raster coordinates; row 0 is the top.
vec2 RasterUV(vec2 geo)
{
    vec2 p = geo * u_textureScale;
    return vec2((p.x - u_textureRect.x) / u_textureRect.z, (u_textureRect.y - p.y) / u_textureRect.w);
}

bool InsideUnitSquare(vec2 uv)
{
    return all(greaterThanEqual(uv, vec2(0.0))) && all(lessThanEqual(uv, vec2(1.0)));
}

// The sampled channel as the texture holds it: 0..1 for bytes and unsigned shorts, -1..1
// for signed shorts, the value itself for floats.
float RasterRaw(int raster, vec2 uv)
{
    if (u_fracture != 0)
    {
        vec2 size = vec2(UnitSize(raster));
        uv = (floor(clamp(uv, 0.0, 0.99999) * size) + 0.5) / size;
    }
    return UnitTexel(raster, uv).r;
}

// The raster value in the units of its pixel format.
float RasterValue(float raw)
{
    if (u_pixelFormat == 8)
        return raw * 255.0;
    if (u_pixelFormat == 16)
        return raw * 32767.0;
    if (u_pixelFormat == 17)
        return raw * 65535.0;
    return raw;
}

// The value scaled to 0..1 by the range of its format (floats as they are).
float FormatNormalised(float raw)
{
    if (u_pixelFormat == 16)
        return raw * 0.5 + 0.5;
    return clamp(raw, 0.0, 1.0);
}

// Mask weight: red times alpha of the mask picture inside the mask rectangle; 0 outside it.
float MaskWeight(vec2 geo, vec4 rect, int unit)
{
    vec2 uv = vec2((geo.x - rect.x) / rect.z, (rect.y - geo.y) / rect.w);
    if (!InsideUnitSquare(uv))
        return 0.0;
    if (unit > 3 || !UnitBound(unit))
        return 1.0;
    vec4 m = UnitTexel(unit, uv);
    return m.r * m.a;
}
