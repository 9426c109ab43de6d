#version 330 compatibility
// roles: u_radius u_alpha
// A soft ring on the limb: brightest on the horizon, falling off outward over the glow width
// and fading quickly inward over the disc. The colour's alpha and the fade multiply it.
in vec2 v_offset;

uniform float u_radius;
uniform float u_alpha;
uniform vec4 u_color;

out vec4 fragColor;

const float kGlowWidth = 0.18;

void main()
{
    float width = max(u_radius * kGlowWidth, 2.0);
    float t = (length(v_offset) - u_radius) / width; // 0 on the horizon, 1 at the quad's edge
    float glow = t >= 0.0 ? exp(-3.0 * t) * (1.0 - smoothstep(0.6, 1.0, t)) : exp(8.0 * t);
    float a = clamp(glow * u_alpha * u_color.a, 0.0, 1.0);
    if (a <= 0.0)
        discard;
    fragColor = vec4(u_color.rgb, a);
}
