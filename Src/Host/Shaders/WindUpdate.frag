#version 330 compatibility
// roles: u_wind u_particles u_colorTable u_screen u_opacity u_particleRes u_windRes u_windMin u_windMax u_randSeed u_speedFactor u_dropRate u_dropRateBump
// One step of every particle: it moves with the wind at its place, goes round the Earth
// east and west, and drops out at random (more often the faster it goes) or past a pole, to
// start again at a random place. The map is the whole Earth in plate carree, so a step of
// u metres east is u / (C cos(latitude)) of the map's width and v metres north 2 v / C of its
// height, with C the circumference; a step lasts kSecondsPerStep * u_speedFactor seconds.
#include "WindState.glsl"

in vec2 v_uv;

uniform sampler2D u_wind;
uniform sampler2D u_particles;
uniform float u_randSeed;
uniform vec2 u_windRes;
uniform vec2 u_windMin;
uniform vec2 u_windMax;
uniform float u_speedFactor;
uniform float u_dropRate;
uniform float u_dropRateBump;

out vec4 fragColor;

const float kPi = 3.14159265358979;
const float kCircumference = 40075016.68557849;
const float kSecondsPerStep = 2400.0;
// Near the poles a degree of longitude is short: the stretch is held here.
const float kMinCosine = 0.05;

float Random(vec2 seed)
{
    return fract(sin(dot(seed, vec2(12.9898, 78.233))) * 43758.5453);
}

// The wind between the picture's samples, which lie at pixel centres; across 180 degrees
// the picture's left and right columns meet.
vec2 Wind(vec2 place)
{
    vec2 size = max(u_windRes, vec2(1.0));
    vec2 at = place * size - 0.5;
    vec2 base = floor(at);
    vec2 f = at - base;
    vec2 x = mod(vec2(base.x, base.x + 1.0) + 0.5, size.x) / size.x;
    vec2 y = (clamp(vec2(base.y, base.y + 1.0), 0.0, size.y - 1.0) + 0.5) / size.y;
    vec2 w00 = WindAt(u_wind, vec2(x.x, y.x), u_windMin, u_windMax);
    vec2 w10 = WindAt(u_wind, vec2(x.y, y.x), u_windMin, u_windMax);
    vec2 w01 = WindAt(u_wind, vec2(x.x, y.y), u_windMin, u_windMax);
    vec2 w11 = WindAt(u_wind, vec2(x.y, y.y), u_windMin, u_windMax);
    return mix(mix(w00, w10, f.x), mix(w01, w11, f.x), f.y);
}

void main()
{
    vec4 texel = texelFetch(u_particles, ivec2(gl_FragCoord.xy), 0);
    if (!HasWind(u_wind))
    {
        fragColor = texel;
        return;
    }
    vec2 place = DecodeState(texel);
    vec2 wind = Wind(place);
    float latitude = (0.5 - place.y) * kPi;
    float seconds = kSecondsPerStep * u_speedFactor;
    vec2 step = vec2(wind.x / (kCircumference * max(cos(latitude), kMinCosine)),
                     -2.0 * wind.y / kCircumference) * seconds;
    place += step;
    place.x = fract(place.x);

    vec2 seed = (v_uv + place) * (u_randSeed + 1.0);
    float dropRate = u_dropRate + SpeedShare(wind, u_windMin, u_windMax) * u_dropRateBump;
    if (Random(seed) < dropRate || place.y < 0.0 || place.y > 1.0)
    {
        // Spread evenly over the sphere, not over the map: no crowd at the poles.
        float sine = 2.0 * Random(seed + 1.3) - 1.0;
        place = vec2(Random(seed + 2.1), 0.5 - asin(sine) / kPi);
    }
    fragColor = EncodeState(place);
}
