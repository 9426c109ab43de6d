#version 330 compatibility
// roles: u_height u_levelShift u_colorTable u_projKind u_haze

in float v_level;
in float v_haze;

uniform sampler2D u_colorTable; // 1 x 24, one colour per speed level
uniform vec4 u_haze;            // colour the trails are tinted towards

out vec4 fragColor;

void main()
{
    // Level 0..22 to the centre of its table row.
    float row = (clamp(v_level, 0.0, 1.0) * 22.0 + 0.5) / 24.0;
    vec4 color = texture(u_colorTable, vec2(0.5, row));
    vec3 rgb = mix(color.rgb, u_haze.rgb, u_haze.a);
    fragColor = vec4(rgb, max(color.a, v_haze));
}
