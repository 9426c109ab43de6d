#version 330 compatibility
// roles: u_projectionMode u_size - u_position
// The cell's colour, its last pixel towards each edge darker and more opaque, so that
// neighbouring cells of one colour stay apart.
in vec2 v_corner;

uniform vec4 u_color;

out vec4 fragColor;

void main()
{
    vec2 pixels = (1.0 - abs(v_corner)) / max(fwidth(v_corner), vec2(1e-6));
    float edge = 1.0 - clamp(min(pixels.x, pixels.y), 0.0, 1.0);
    vec3 rgb = mix(u_color.rgb, u_color.rgb * 0.45, edge);
    fragColor = vec4(rgb, mix(u_color.a, max(u_color.a, 0.9), edge));
}
