#version 330 compatibility
// roles: u_elevation u_shadowMap u_viewport u_sunSpace u_heightBase u_heightScale u_earthMap u_cameraPosition u_sunPosition u_brightness u_spotSize u_lightFactor u_ambientColor u_ambientSHLightColor u_lightColor u_sunDirection u_spotColor u_shCoefficients u_shFirstOrder u_heightLift u_useShadow u_pass
// Sun lighting of the globe. The pass flag 0 is the depth pass from the sun: only depth
// counts. The main pass takes its colour from the Earth map (texture flag) or plain white,
// lights it by the sun with an exposure curve (u_brightness arrives negative), adds the
// sun's spot, the ambient terms and the fill colour u_color, and with the shadow flag
// darkens what the depth picture from the sun hides.
in vec3 v_world;
in vec2 v_geo;

uniform sampler2D u_elevation;
uniform sampler2D u_shadowMap;
uniform sampler2D u_earthMap;
uniform ivec2 u_viewport;
uniform mat4 u_sunSpace;
uniform float u_heightBase;
uniform float u_heightScale;
uniform vec3 u_cameraPosition;
uniform vec3 u_sunPosition;
uniform float u_brightness;
uniform float u_spotSize;
uniform float u_lightFactor;
uniform vec3 u_ambientColor;
uniform vec3 u_ambientSHLightColor;
uniform vec3 u_lightColor;
uniform vec3 u_sunDirection; // from the sun towards the Earth
uniform vec3 u_spotColor;
uniform vec3 u_shCoefficients[9];
uniform vec2 u_shFirstOrder[6];
uniform float u_textureEnabled;
uniform float u_useShadow;
uniform float u_pass;
uniform vec4 u_color;

out vec4 fragColor;

// Irradiance of nine spherical-harmonic coefficients in the usual order.
vec3 SHIrradiance(vec3 n)
{
    const float c1 = 0.429043, c2 = 0.511664, c3 = 0.743125, c4 = 0.886227, c5 = 0.247708;
    vec3 e = c4 * u_shCoefficients[0] - c5 * u_shCoefficients[6];
    e += 2.0 * c2 * (u_shCoefficients[3] * n.x + u_shCoefficients[1] * n.y + u_shCoefficients[2] * n.z);
    e += c3 * u_shCoefficients[6] * n.z * n.z + c1 * u_shCoefficients[8] * (n.x * n.x - n.y * n.y);
    e += 2.0 * c1 * (u_shCoefficients[4] * n.x * n.y + u_shCoefficients[7] * n.x * n.z +
                     u_shCoefficients[5] * n.y * n.z);
    vec3 first = vec3(dot(u_shFirstOrder[0], n.xy), dot(u_shFirstOrder[1], n.yz),
                      dot(u_shFirstOrder[2], n.zx));
    return max(e + first, vec3(0.0));
}

vec2 MapCoord(vec2 geo)
{
    return vec2((geo.x + 180.0) / 360.0, (90.0 - geo.y) / 180.0);
}

// Surface normal tilted by the slope of the elevation picture (0..1 per texel).
vec3 BumpNormal(vec3 n)
{
    vec2 uv = MapCoord(v_geo);
    vec2 texel = 1.0 / vec2(textureSize(u_elevation, 0));
    float h = texture(u_elevation, uv).r;
    float dx = texture(u_elevation, uv + vec2(texel.x, 0.0)).r - h;
    float dy = texture(u_elevation, uv - vec2(0.0, texel.y)).r - h;
    vec3 east = normalize(vec3(-n.y, n.x, 0.0) + vec3(1e-6, 0.0, 0.0));
    vec3 north = cross(n, east);
    // A gentle tilt: the relief shading only hints at the mountains.
    float strength = 1.5;
    return normalize(n - strength * (dx * east + dy * north));
}

float Shadow()
{
    vec4 s = u_sunSpace * vec4(v_world, 1.0);
    vec3 c = s.xyz / s.w * 0.5 + 0.5;
    vec2 texel = 1.0 / vec2(max(u_viewport, ivec2(1)));
    float lit = 0.0;
    for (int k = 0; k < 4; ++k)
    {
        vec2 o = vec2(k & 1, k >> 1) - 0.5;
        lit += c.z - 0.002 <= texture(u_shadowMap, c.xy + o * texel).r ? 1.0 : 0.0;
    }
    return mix(0.25, 1.0, lit * 0.25);
}

void main()
{
    if (u_pass < 0.5)
    {
        fragColor = vec4(0.0);
        return;
    }
    vec3 n = normalize(v_world);
    vec3 bumped = textureSize(u_elevation, 0).x > 1 ? BumpNormal(n) : n;
    vec3 albedo = u_textureEnabled > 0.5 ? texture(u_earthMap, MapCoord(v_geo)).rgb : vec3(1.0);
    vec3 toSun = normalize(u_sunPosition - v_world);
    float sunLit = max(dot(bumped, toSun), 0.0) * u_lightFactor;
    if (u_useShadow > 0.5)
        sunLit *= Shadow();
    // The sun's spot: its mirror image around the view direction.
    vec3 toEye = normalize(u_cameraPosition - v_world);
    float mirror = max(dot(reflect(normalize(u_sunDirection), n), toEye), 0.0);
    float spot = smoothstep(u_spotSize, 1.0, pow(mirror, 8.0)) * step(0.0, dot(n, toSun));
    vec3 ambient = u_ambientColor * u_ambientSHLightColor * SHIrradiance(n);
    vec3 light = u_lightColor * sunLit + ambient + u_color.rgb;
    vec3 radiance = albedo * light + u_spotColor * spot * 0.25 * u_lightFactor;
    fragColor = vec4(1.0 - exp(u_brightness * radiance), 1.0);
}
