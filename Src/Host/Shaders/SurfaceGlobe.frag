#version 400 compatibility
// The surface globe: the base image (unit 0), tinted by the colour ramp (unit 1) looked up
// with the bump map's value and weighted by the ramp's alpha; where the mask (u_textures[0])
// is set, the mask colour covers it by its alpha. The bump map (u_textures[1], steps of
// 1000 m) tilts the sphere's normal by its slope, eight times exaggerated, and the sun
// (u_sunPosition) lights the result with the pass's ambient and diffuse terms; the masked
// parts shine with u_specular and u_shininess. With lighting off the colour shows as it is.
in vec2 v_uv;
in vec2 v_geo;
in vec3 v_normal;
in vec3 v_toEye;

uniform sampler2D u_texture0;     // base image
uniform sampler2D u_texture1;     // ramp: one pixel wide, row i = bump value i / rows
uniform sampler2D u_textures[2];  // mask, bump map
uniform float u_textureCount;
uniform vec4 u_maskColor;
uniform float u_lightingEnabled;
uniform vec4 u_ambient;
uniform vec4 u_diffuse;
uniform vec4 u_specular;
uniform float u_shininess;
uniform vec3 u_sunPosition;

out vec4 fragColor;

const float kDegToRad = 0.017453292519943295;
const float kMetresPerDegree = 111319.49;
const float kMetresPerStep = 1000.0;
const float kExaggeration = 8.0;

float Bump(vec2 uv)
{
    return u_textureCount > 1.5 ? texture(u_textures[1], uv).r : 0.0;
}

// The sphere's normal tilted by the bump map's slope towards east and north.
vec3 BumpNormal(vec3 up, vec2 uv)
{
    vec2 size = vec2(textureSize(u_textures[1], 0));
    if (u_textureCount < 1.5 || size.x < 1.0 || size.y < 1.0)
        return up;
    vec2 texel = 1.0 / size;
    float lon = v_geo.x * kDegToRad, lat = v_geo.y * kDegToRad;
    vec3 east = vec3(-sin(lon), cos(lon), 0.0);
    vec3 north = vec3(-sin(lat) * cos(lon), -sin(lat) * sin(lon), cos(lat));
    // Metres covered by one texel; v grows southwards.
    float dx = 360.0 * texel.x * kMetresPerDegree * max(cos(lat), 0.05);
    float dy = 180.0 * texel.y * kMetresPerDegree;
    float steps = 255.0 * kMetresPerStep * kExaggeration;
    float slopeEast = (Bump(uv + vec2(texel.x, 0.0)) - Bump(uv - vec2(texel.x, 0.0))) * 0.5 * steps / dx;
    float slopeNorth = (Bump(uv - vec2(0.0, texel.y)) - Bump(uv + vec2(0.0, texel.y))) * 0.5 * steps / dy;
    return normalize(up - east * slopeEast - north * slopeNorth);
}

void main()
{
    vec2 uv = v_uv;
    if (any(lessThan(uv, vec2(0.0))) || any(greaterThan(uv, vec2(1.0))))
        discard;
    vec3 base = texture(u_texture0, uv).rgb;
    float mask = u_textureCount > 0.5 ? texture(u_textures[0], uv).r : 0.0;
    float rows = float(textureSize(u_texture1, 0).y);
    vec4 ramp = rows > 0.0 ? texture(u_texture1, vec2(0.5, (Bump(uv) * (rows - 1.0) + 0.5) / rows))
                           : vec4(0.0);
    vec3 colour = mix(base, ramp.rgb, ramp.a);
    float water = clamp(mask, 0.0, 1.0);
    colour = mix(colour, u_maskColor.rgb, water * u_maskColor.a);
    if (u_lightingEnabled < 0.5)
    {
        fragColor = vec4(colour, 1.0);
        return;
    }
    vec3 up = normalize(v_normal);
    vec3 n = BumpNormal(up, uv);
    vec3 toEye = normalize(v_toEye);
    bool sunSet = dot(u_sunPosition, u_sunPosition) > 1.0;
    vec3 s = sunSet ? normalize(u_sunPosition) : toEye;
    // The sphere decides day and night; the bumps only shade within the day.
    float day = smoothstep(-0.05, 0.1, dot(up, s));
    float cosine = max(dot(n, s), 0.0) * day;
    vec3 lit = colour * (u_ambient.rgb + u_diffuse.rgb * cosine);
    vec3 halfway = normalize(s + toEye);
    lit += u_specular.rgb * water * day * pow(max(dot(up, halfway), 0.0), max(u_shininess, 1.0) * 4.0);
    fragColor = vec4(min(lit, vec3(1.0)), 1.0);
}
