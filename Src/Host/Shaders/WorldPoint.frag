#version 330 compatibility
in vec4 v_color;
in float v_value;
in float v_selected;
in float v_hidden;

uniform int u_colorType;
uniform sampler2D u_colorTable; // one row; bound on unit 3 with colour type 2

out vec4 fragColor;

void main()
{
    if (v_hidden > 0.5)
        discard;
    vec4 color = v_color;
    if (u_colorType == 2)
    {
        // The table repeats: keep to the centres of its first and last texels.
        float edge = 0.5 / float(textureSize(u_colorTable, 0).x);
        color = texture(u_colorTable, vec2(clamp(v_value, edge, 1.0 - edge), 0.5));
    }
    if (v_selected > 0.5)
        color.rgb = mix(color.rgb, vec3(1.0, 1.0, 0.3), 0.5);
    fragColor = color;
}
