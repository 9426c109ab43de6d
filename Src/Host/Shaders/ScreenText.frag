#version 330 compatibility
// roles: u_viewportSize u_screenAnchor u_shadow
// The vertex colour with the glyph's coverage (the alpha of a host glyph texture) as opacity.
in vec2 v_uv;
in vec4 v_color;

uniform sampler2D u_texture0;

out vec4 fragColor;

void main()
{
    fragColor = vec4(v_color.rgb, v_color.a * texture(u_texture0, v_uv).a);
}
