// The fragment of a density marker: a soft spot whose alpha falls off from the centre, so
// that overlapping markers pile up into a brighter, denser glow. Kind 1 has a firmer edge.
in vec2 f_corner;
in vec4 f_color;
flat in int f_kind;

uniform float u_opacity;

out vec4 o_color;

void main()
{
    float r2 = dot(f_corner, f_corner);
    if (r2 > 1.0)
        discard;
    float a = f_kind == 1 ? 1.0 - smoothstep(0.5, 1.0, r2) : exp(-4.0 * r2) * (1.0 - r2);
    o_color = vec4(f_color.rgb, f_color.a * a * u_opacity);
}
