#version 420 compatibility
// roles: u_sunDirection
// The visual globe lit by the sun. The colour comes from the surface picture on unit 0
// where that picture has colour; a grey picture (as the height bump picture is) is coloured
// by the height on unit 2 through a fixed land-and-sea ramp. Sun light: a fixed ambient of
// 0.3 (the pass's ambient, which the effect does not send) plus u_diffuse times the cosine,
// and a u_specular highlight of u_shininess on the sea only.
in vec2 v_uv;
in vec3 v_normal;
in vec3 v_toEye;

layout(binding = 0) uniform sampler2D u_texture0; // surface picture
layout(binding = 2) uniform sampler2D u_heightMap; // height steps 0..255 in red
uniform vec3 u_sunDirection;                        // towards the sun, unit (world axes)
uniform vec4 u_diffuse;
uniform vec4 u_specular;
uniform float u_shininess;

out vec4 fragColor;

// Height steps of 1000 m; the sea floor of the picture lies below step 40.
const float kSeaLevel = 40.0 / 255.0;
const float kAmbient = 0.3;

// Land and sea colours by height (0..1 of the picture's 255 steps).
vec3 HeightTint(float h)
{
    if (h < kSeaLevel)
        return mix(vec3(0.02, 0.10, 0.32), vec3(0.10, 0.32, 0.60), h / kSeaLevel);
    float t = (h - kSeaLevel) / (1.0 - kSeaLevel);
    vec3 lowland = vec3(0.16, 0.42, 0.14), upland = vec3(0.58, 0.50, 0.30);
    vec3 mountain = vec3(0.48, 0.42, 0.38), snow = vec3(0.95, 0.95, 0.97);
    if (t < 0.35)
        return mix(lowland, upland, t / 0.35);
    if (t < 0.6)
        return mix(upland, mountain, (t - 0.35) / 0.25);
    return mix(mountain, snow, clamp((t - 0.6) / 0.3, 0.0, 1.0));
}

void main()
{
    vec3 picture = texture(u_texture0, v_uv).rgb;
    float h = texture(u_heightMap, v_uv).r;
    float saturation = max(picture.r, max(picture.g, picture.b)) - min(picture.r, min(picture.g, picture.b));
    vec3 colour = mix(HeightTint(h), picture, clamp(saturation * 4.0, 0.0, 1.0));

    vec3 n = normalize(v_normal);
    bool sunSet = dot(u_sunDirection, u_sunDirection) > 0.25;
    vec3 s = sunSet ? normalize(u_sunDirection) : normalize(v_toEye);
    float cosine = max(dot(n, s), 0.0);
    vec3 lit = colour * (vec3(kAmbient) + u_diffuse.rgb * cosine);
    if (h < kSeaLevel && cosine > 0.0)
    {
        vec3 halfway = normalize(s + normalize(v_toEye));
        lit += u_specular.rgb * pow(max(dot(n, halfway), 0.0), max(u_shininess, 1.0));
    }
    fragColor = vec4(min(lit, vec3(1.0)), 1.0);
}
