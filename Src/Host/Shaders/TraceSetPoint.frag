#version 430 compatibility
// A round sprite in the object colour, faded along the tail; the head is brighter.
uniform vec4 u_color;
uniform float u_opacity;

in vec2 f_corner;
in float f_alpha;
in float f_head;

out vec4 o_color;

void main()
{
    float r = length(f_corner);
    if (r > 1.0)
        discard;
    float edge = 1.0 - smoothstep(0.6, 1.0, r);
    vec3 rgb = mix(u_color.rgb, vec3(1.0), 0.6 * f_head * (1.0 - r));
    o_color = vec4(rgb, u_color.a * u_opacity * f_alpha * edge);
}
