#version 400 compatibility
// Tiling: the normalised raster value (unit 0, in red or in alpha) chooses among the
// repeating textures u_textures[0 .. u_textureCount - 1]. With two values per texture in
// u_mixSpans (normalised, rising) texture i shows alone over [u_mixSpans[2i],
// u_mixSpans[2i + 1]], the gap to the next span mixes the two linearly, and values beyond the
// first or last span take the first or last texture; without them the textures share 0..1
// in equal parts. Fragments outside the raster's rectangle, or of no value (NaN), are left
// out. With lighting on, the sun (u_sunPosition) lights the ground with the pass's ambient
// and diffuse terms, the sphere's normal tilted by the raster's slope (the value's change
// across the raster's width, times u_shadingScale / 8). The opacity is u_opacity.
in vec2 v_rasterUV;
in vec2 v_repeat;
in vec2 v_geo;
in vec3 v_normal;
in vec3 v_toEye;

const int kMaxTextures = 16;

uniform sampler2D u_texture0; // the raster
uniform sampler2D u_textures[kMaxTextures];
uniform float u_textureCount;
uniform float u_mixSpans[2 * kMaxTextures];
uniform float u_mixSpanCount;
uniform float u_valueInAlpha;
uniform float u_shadingScale;
uniform float u_opacity;
uniform float u_sceneMode;
uniform float u_lightingEnabled;
uniform vec4 u_ambient;
uniform vec4 u_diffuse;
uniform vec3 u_sunPosition;

out vec4 fragColor;

const float kDegToRad = 0.017453292519943295;

float Value(vec2 uv)
{
    vec4 t = texture(u_texture0, uv);
    return u_valueInAlpha > 0.5 ? t.a : t.r;
}

// Weight of texture i for value v among n textures.
float Weight(int i, int n, float v)
{
    if (u_mixSpanCount < float(2 * n))
    {
        float k = clamp(floor(v * float(n)), 0.0, float(n - 1));
        return float(i) == k ? 1.0 : 0.0;
    }
    float lo = u_mixSpans[2 * i], hi = u_mixSpans[2 * i + 1];
    if ((v >= lo && v <= hi) || (i == 0 && v < lo) || (i == n - 1 && v > hi))
        return 1.0;
    if (i > 0)
    {
        float before = u_mixSpans[2 * i - 1];
        if (v > before && v < lo)
            return (v - before) / (lo - before);
    }
    if (i < n - 1)
    {
        float after = u_mixSpans[2 * i + 2];
        if (v > hi && v < after)
            return (after - v) / (after - hi);
    }
    return 0.0;
}

// The sphere's normal (or the plane's up) tilted by the raster's slope, east along +u and
// north along -v of the raster.
vec3 ReliefNormal(vec3 up, vec2 uv)
{
    vec2 size = vec2(textureSize(u_texture0, 0));
    vec2 texel = 1.0 / max(size, vec2(1.0));
    float east = (Value(uv + vec2(texel.x, 0.0)) - Value(uv - vec2(texel.x, 0.0))) * 0.5 * size.x;
    float north = (Value(uv - vec2(0.0, texel.y)) - Value(uv + vec2(0.0, texel.y))) * 0.5 * size.x;
    float k = u_shadingScale / 8.0;
    vec3 e = vec3(1.0, 0.0, 0.0), n = vec3(0.0, 1.0, 0.0);
    if (u_sceneMode < 1.5)
    {
        float lon = v_geo.x * kDegToRad, lat = v_geo.y * kDegToRad;
        e = vec3(-sin(lon), cos(lon), 0.0);
        n = vec3(-sin(lat) * cos(lon), -sin(lat) * sin(lon), cos(lat));
    }
    return normalize(up - e * east * k - n * north * k);
}

void main()
{
    vec2 uv = v_rasterUV;
    if (any(lessThan(uv, vec2(0.0))) || any(greaterThan(uv, vec2(1.0))))
        discard;
    float v = Value(uv);
    if (isnan(v))
        discard;
    int n = int(clamp(u_textureCount, 0.0, float(kMaxTextures)));
    // Derivatives of the unwrapped coordinate keep the filtering smooth across the seams of
    // the repeats.
    vec2 dx = dFdx(v_repeat), dy = dFdy(v_repeat);
    vec2 repeat = fract(v_repeat);
    vec3 colour = vec3(0.0);
    float total = 0.0;
    for (int i = 0; i < kMaxTextures; ++i)
    {
        if (i >= n)
            break;
        float w = Weight(i, n, v);
        colour += w * textureGrad(u_textures[i], repeat, dx, dy).rgb;
        total += w;
    }
    if (total <= 0.0)
        discard;
    colour /= total;
    if (u_lightingEnabled > 0.5)
    {
        vec3 up = u_sceneMode < 1.5 ? normalize(v_normal) : vec3(0.0, 0.0, 1.0);
        vec3 normal = ReliefNormal(up, uv);
        vec3 s = dot(u_sunPosition, u_sunPosition) > 1.0 ? normalize(u_sunPosition) : normalize(v_toEye);
        float day = smoothstep(-0.05, 0.1, dot(up, s));
        colour *= u_ambient.rgb + u_diffuse.rgb * max(dot(normal, s), 0.0) * day;
    }
    fragColor = vec4(min(colour, vec3(1.0)), u_opacity);
}
