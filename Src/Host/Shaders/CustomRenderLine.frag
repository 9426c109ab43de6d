#version 330 compatibility
// roles: u_projKind u_relativeHeight u_useTexture
// The vertex colour, or with u_useTexture the texture on unit 0 at the vertex colour's red
// value across it (a one-pixel texture gives its one colour; a colour table its entry),
// with the vertex alpha. What lies beyond the globe's horizon is dropped.
in vec4 v_color;
in float v_facing;

uniform sampler2D u_texture0;
uniform int u_useTexture;

out vec4 fragColor;

void main()
{
    if (v_facing < 0.0)
        discard;
    vec4 color = v_color;
    if (u_useTexture != 0)
    {
        color = texture(u_texture0, vec2(v_color.r, 0.5));
        color.a *= v_color.a;
    }
    fragColor = color;
}
