#version 330 compatibility
// roles: u_positionKind u_opacity u_width u_streamWeight u_feather u_dashLength u_gapLength u_dashOffset u_miterLimit u_edge

uniform float u_dashLength; // local units along the line; 0 draws it solid
uniform float u_gapLength;
uniform float u_dashOffset;

noperspective in float v_across;
in float v_along;
flat in float v_halfWidth;
flat in float v_fade;
in vec4 v_color;

out vec4 fragColor;

void main()
{
    if (u_dashLength > 0.0)
    {
        float period = u_dashLength + max(u_gapLength, 0.0);
        if (mod(v_along - u_dashOffset, period) > u_dashLength)
            discard;
    }
    float alpha = v_fade > 0.0 ? clamp((v_halfWidth - abs(v_across)) / v_fade, 0.0, 1.0) : 1.0;
    fragColor = vec4(v_color.rgb, v_color.a * alpha);
}
