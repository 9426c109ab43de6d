#version 330 compatibility
// roles: u_rasterRect u_shadingScale u_valueInAlpha u_sceneMode
// Normalised raster value through the colour ramp, shaded by the raster's slope under a light
// from the north-west at 45 degrees (the usual hill-shade light). The slope of the value per
// texel is exaggerated by u_shadingScale * 4e-6.
in vec2 v_rasterUV;

uniform sampler2D u_texture0; // raster: value in red (luminance) or in alpha
uniform sampler2D u_texture1; // ramp: one pixel wide, row i = value i / rows
uniform float u_shadingScale;
uniform float u_valueInAlpha;
uniform vec4 u_ambient;
uniform vec4 u_diffuse;

out vec4 fragColor;

float Value(vec2 uv)
{
    vec4 t = texture(u_texture0, uv);
    return u_valueInAlpha > 0.5 ? t.a : t.r;
}

void main()
{
    vec2 uv = v_rasterUV;
    if (any(lessThan(uv, vec2(0.0))) || any(greaterThan(uv, vec2(1.0))))
        discard;
    float v = Value(uv);
    if (isnan(v))
        discard;
    vec2 texel = 1.0 / vec2(textureSize(u_texture0, 0));
    // East along +u, north along -v.
    float east = (Value(uv + vec2(texel.x, 0.0)) - Value(uv - vec2(texel.x, 0.0))) * 0.5;
    float north = (Value(uv - vec2(0.0, texel.y)) - Value(uv + vec2(0.0, texel.y))) * 0.5;
    float z = u_shadingScale * 4.0e-6;
    vec3 n = normalize(vec3(-east * z, -north * z, 1.0));
    const vec3 light = vec3(-0.5, 0.5, 0.70710678);
    float shade = max(dot(n, light), 0.0) / light.z; // 1 on flat ground

    float rows = float(textureSize(u_texture1, 0).y);
    vec3 ramp = texture(u_texture1, vec2(0.5, (clamp(v, 0.0, 1.0) * rows + 0.5) / max(rows, 1.0))).rgb;
    vec3 c = ramp * (u_ambient.rgb + u_diffuse.rgb * shade);
    fragColor = vec4(min(c, vec3(1.0)), 1.0);
}
