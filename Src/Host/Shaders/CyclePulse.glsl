// The fragment of a pulse at age f_age (0 at birth, 1 at death) of the marker's life.
in vec2 f_corner;
in vec4 f_color;
in float f_age;
flat in int f_kind;

out vec4 o_color;

void main()
{
    float r = length(f_corner);
    if (r > 1.0 || f_age >= 1.0)
        discard;
    float fade = 1.0 - f_age;
    float a;
    if (f_kind == 0)
    {
        float ringRadius = mix(0.15, 0.95, sqrt(f_age));
        float ring = 1.0 - smoothstep(0.0, 0.12, abs(r - ringRadius));
        float core = 1.0 - smoothstep(0.15, 0.35, r / max(fade, 0.05));
        a = max(ring * fade, core * fade * fade);
    }
    else
        a = 1.0 - smoothstep(0.8 * fade, fade, r);
    o_color = vec4(f_color.rgb, f_color.a * a);
}
