#version 330 compatibility
// The uniform colour times the texture on unit 0. Glyphs and the engine's circle are white
// with their coverage in alpha, so they give the colour with that coverage; a picture is
// tinted by the colour.
in vec2 v_uv;

uniform vec4 u_color;
uniform sampler2D u_texture0;

out vec4 fragColor;

void main()
{
    fragColor = u_color * texture(u_texture0, v_uv);
}
