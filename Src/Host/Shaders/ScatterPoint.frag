#version 330 compatibility
// The icon's pixel from the atlas on unit 0.
in vec2 g_uv;

uniform sampler2D u_texture0;

out vec4 fragColor;

void main()
{
    vec4 color = texture(u_texture0, g_uv);
    if (color.a < 0.02)
        discard;
    fragColor = color;
}
