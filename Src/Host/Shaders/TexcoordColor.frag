#version 330 compatibility
// The tint with the texture's alpha as opacity (a host glyph samples as white with its
// coverage in alpha), inside a dark rim one texel wide around the ink, so that the text
// stays readable on light and dark ground alike.
in vec2 v_uv;
in vec4 v_color;

uniform sampler2D u_texture0;

out vec4 fragColor;

void main()
{
    float ink = texture(u_texture0, v_uv).a;
    vec2 texel = 1.0 / vec2(textureSize(u_texture0, 0));
    float rim = 0.0;
    for (int j = -1; j <= 1; ++j)
        for (int i = -1; i <= 1; ++i)
            rim = max(rim, texture(u_texture0, v_uv + vec2(i, j) * texel).a);
    vec3 color = v_color.rgb * ink / max(max(ink, rim), 1e-3);
    fragColor = vec4(color, v_color.a * max(ink, 0.8 * rim));
}
