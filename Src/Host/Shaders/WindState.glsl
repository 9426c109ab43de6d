// The particle state of "WindUpdate" and "WindDraw": one RGBA texel per particle holding its
// place on the whole map, x in red (high byte) and green (low byte), y in blue and alpha. Each
// is a 16-bit fraction: 0 the left (west) or top (north) edge of the map, 65535 the right or
// bottom edge. Random bytes are thus random places.
vec2 DecodeState(vec4 texel)
{
    vec4 b = floor(texel * 255.0 + 0.5);
    return vec2(b.r * 256.0 + b.g, b.b * 256.0 + b.a) / 65535.0;
}

vec4 EncodeState(vec2 place)
{
    vec2 n = floor(clamp(place, 0.0, 1.0) * 65535.0 + 0.5);
    vec2 high = floor(n / 256.0);
    vec2 low = n - high * 256.0;
    return vec4(high.x, low.x, high.y, low.y) / 255.0;
}

// The wind at a place: red and green of the picture spread linearly over the bounds.
vec2 WindAt(sampler2D wind, vec2 place, vec2 windMin, vec2 windMax)
{
    return mix(windMin, windMax, textureLod(wind, place, 0.0).rg);
}

// Share of full speed: the longer of the two bound vectors is full speed.
float SpeedShare(vec2 wind, vec2 windMin, vec2 windMax)
{
    float full = max(length(windMin), length(windMax));
    return full > 0.0 ? clamp(length(wind) / full, 0.0, 1.0) : 0.0;
}

// Whether a wind picture is bound: without one the particles neither move nor show. An empty
// unit reads as no texture (size 0) or as the driver's stand-in of a single black pixel, so a
// picture of one pixel counts as none.
bool HasWind(sampler2D wind)
{
    return any(greaterThan(textureSize(wind, 0), ivec2(1)));
}
