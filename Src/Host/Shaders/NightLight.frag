#version 330 compatibility
// roles: u_rasterRect u_shadingScale u_valueInAlpha u_sceneMode
// City lights on the night side. With lighting on, the sun (u_sunPosition, the engine's sun
// in world coordinates) switches them off where it stands above the horizon, with a short
// twilight band. With a colour table on unit 1 (one pixel wide, two rows or more) the image
// is a grey value looked up in the table; without one (nothing bound there, which samples as
// at most one texel) its colour is used as it is. The brightness of a light makes its
// opacity, so the dark parts of the image leave the globe unchanged.
in vec2 v_imageUV;
in vec3 v_normal;

uniform sampler2D u_texture0; // night image
uniform sampler2D u_texture1; // colour table: one pixel wide, row i = value i / (rows - 1)
uniform float u_valueInAlpha;
uniform float u_lightingEnabled;
uniform vec4 u_ambient;
uniform vec4 u_diffuse;
uniform vec3 u_sunPosition;

out vec4 fragColor;

// 1 where the sun is below the horizon, 0 where it is up.
float Night(vec3 n)
{
    if (u_lightingEnabled < 0.5 || dot(u_sunPosition, u_sunPosition) < 1.0)
        return 1.0;
    float sunHeight = dot(normalize(n), normalize(u_sunPosition));
    return 1.0 - smoothstep(-0.12, 0.02, sunHeight);
}

void main()
{
    vec2 uv = v_imageUV;
    if (any(lessThan(uv, vec2(0.0))) || any(greaterThan(uv, vec2(1.0))))
        discard;
    float night = Night(v_normal);
    if (night <= 0.0)
        discard;
    vec4 t = texture(u_texture0, uv);
    ivec2 tableSize = textureSize(u_texture1, 0);
    float rows = float(tableSize.y);
    vec3 light;
    float strength;
    if (tableSize.x == 1 && tableSize.y > 1)
    {
        float v = clamp(u_valueInAlpha > 0.5 ? t.a : t.r, 0.0, 1.0);
        light = texture(u_texture1, vec2(0.5, (v * (rows - 1.0) + 0.5) / rows)).rgb;
        strength = v;
    }
    else
    {
        light = t.rgb;
        strength = max(t.r, max(t.g, t.b));
    }
    // The hue at full brightness, lifted by the material; the brightness becomes the opacity,
    // raised so that small towns still show.
    vec3 c = min(light / max(strength, 0.05) * (u_ambient.rgb + u_diffuse.rgb), vec3(1.0));
    fragColor = vec4(c, clamp(strength * 1.6 * night, 0.0, 1.0));
}
