#version 330 compatibility
// roles: u_refCenter u_windTexture phase dynamic u_projKind u_viewport u_lineWidth u_widthScale value level

in float v_along;
in float v_across;
in float v_fraction;

uniform sampler2D u_texture0;    // the engine's plot line: dashes along s
uniform sampler2D u_texture1;    // colour table, 1 x 24
uniform sampler2D u_windTexture; // streak, head at the right
uniform float phase;
uniform float dynamic;
uniform float value; // pattern repeats per unit of distance along the line (0: one)
uniform float level; // speed level / 22

out vec4 fragColor;

void main()
{
    vec4 color = texture(u_texture1, vec2(0.5, (clamp(level, 0.0, 1.0) * 22.0 + 0.5) / 24.0));
    float repeats = value > 0.0 ? value : 1.0;
    float s = v_along * repeats;
    // Soft edges across the line, faded in at the start and out at the end.
    float edge = 1.0 - smoothstep(0.55, 1.0, abs(v_across * 2.0 - 1.0));
    float ends = smoothstep(0.0, 0.05, v_fraction) * (1.0 - smoothstep(0.95, 1.0, v_fraction));
    float pattern;
    if (dynamic > 0.5)
        pattern = 0.2 + 0.8 * texture(u_windTexture, vec2(fract(s - phase), v_across)).a;
    else
        pattern = max(texture(u_texture0, vec2(s, 0.5)).a, 0.4);
    fragColor = vec4(color.rgb, color.a * edge * ends * pattern);
}
