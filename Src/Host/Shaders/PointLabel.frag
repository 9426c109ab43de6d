#version 330 compatibility
// roles: u_projectionMode u_size - u_position
// u_color with the glyph's coverage (unit 0) as opacity.
in vec2 v_uv;

uniform vec4 u_color;
uniform sampler2D u_texture0;

out vec4 fragColor;

void main()
{
    fragColor = vec4(u_color.rgb, u_color.a * texture(u_texture0, v_uv).a);
}
