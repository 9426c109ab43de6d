#version 330 compatibility
// The picture's pixel from unit 0. Without a picture (a file that could not be read) a
// drawn stand-in keeps the typhoon visible: a red ring for the symbol, a grey dot for a
// level picture. An unbound unit reads as a picture of size 0, or as the driver's
// one-pixel stand-in for an incomplete texture: neither is a picture of ours.
in vec2 g_uv;
in vec2 g_local;
in float g_alpha;

uniform sampler2D u_texture0;
uniform float u_pictureMode;

out vec4 fragColor;

vec4 StandIn()
{
    float r = length(g_local);
    if (u_pictureMode < 0.5)
        return vec4(0.86, 0.12, 0.12, 1.0 - smoothstep(0.06, 0.1, abs(r - 0.45)));
    return vec4(0.85, 0.85, 0.85, 1.0 - smoothstep(0.45, 0.55, r));
}

void main()
{
    vec4 color = textureSize(u_texture0, 0).x <= 1 ? StandIn() : texture(u_texture0, g_uv);
    color.a *= g_alpha;
    if (color.a < 0.02)
        discard;
    fragColor = color;
}
