#version 330 compatibility
in vec2 v_texcoord;
in vec4 v_color;

uniform sampler2D u_texture0;

out vec4 fragColor;

void main()
{
    vec4 t = texture(u_texture0, v_texcoord);
    fragColor = vec4(mix(v_color.rgb, t.rgb, t.a), v_color.a * max(t.a, 0.35));
}
