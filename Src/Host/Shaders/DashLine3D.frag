#version 330 compatibility
// roles: u_refCenter u_dashed u_geographic u_relativeHeight u_dashLength u_gapLength u_dashOffset u_opacity u_lineWidth u_feather u_projKind u_viewport u_totalLength
// u_color over u_lineWidth pixels, fading out over u_feather pixels at each edge. With
// u_dashed the line is cut into dashes of u_dashLength and gaps of u_gapLength (units of the
// length along the line, from u_dashOffset), stretched so that a whole number of them fills
// the chunk's u_totalLength.
in float v_across;
in float v_length;
in float v_facing;

uniform vec4 u_color;
uniform int u_dashed;
uniform float u_dashLength;
uniform float u_gapLength;
uniform float u_dashOffset;
uniform float u_opacity;
uniform float u_lineWidth;
uniform float u_feather;
uniform float u_totalLength;

out vec4 fragColor;

void main()
{
    if (v_facing < 0.0)
        discard;
    if (u_dashed != 0)
    {
        float period = u_dashLength + u_gapLength;
        if (period > 0.0 && u_totalLength > 0.0)
        {
            float count = max(1.0, floor(u_totalLength / period + 0.5));
            float stretched = u_totalLength / count;
            float phase = mod(v_length + u_dashOffset, stretched) / stretched;
            if (phase > u_dashLength / period)
                discard;
        }
    }
    float feather = max(u_feather, 1e-3);
    float coverage = clamp((0.5 * u_lineWidth + 0.5 * feather - abs(v_across)) / feather, 0.0, 1.0);
    fragColor = vec4(u_color.rgb, u_color.a * u_opacity * coverage);
}
