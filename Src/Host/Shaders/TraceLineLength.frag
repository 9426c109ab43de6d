#version 330 compatibility
// roles: u_projectionMode u_earthPixels u_traceScale u_traceHead

noperspective in vec2 v_stroke;
flat in float v_reach;
in vec4 v_color;

out vec4 fragColor;

void main()
{
    // Along is 0 over the body, so this is the distance from the centre line there and from
    // the end point in the caps; the rim fades over the outer pixel.
    float rim = clamp(v_reach - length(v_stroke), 0.0, 1.0);
    if (rim <= 0.0)
        discard;
    fragColor = vec4(v_color.rgb, v_color.a * rim);
}
