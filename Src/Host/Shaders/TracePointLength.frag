#version 330 compatibility
// roles: u_projectionMode u_earthPixels u_traceScale u_traceHead

in vec2 v_corner;
in vec4 v_color;

out vec4 fragColor;

void main()
{
    // The disc inside the square, its rim smoothed over one pixel.
    float r = length(v_corner);
    float rim = clamp((1.0 - r) / max(fwidth(r), 1e-4), 0.0, 1.0);
    if (rim <= 0.0)
        discard;
    fragColor = vec4(v_color.rgb, v_color.a * rim);
}
