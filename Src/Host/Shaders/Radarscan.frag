#version 330 compatibility
#include "GeoProject.glsl"

in vec2 v_geo;
in float v_value;

uniform sampler2D u_texture0; // colour table, one row
uniform vec3 u_radarPos;      // longitude, latitude, height
uniform float u_opacity;
uniform float u_startAz;
uniform float u_endAz;

out vec4 fragColor;

void main()
{
    float az = Azimuth(u_radarPos.xy, v_geo);
    // A window whose end lies below its start runs through north.
    float span = u_endAz - u_startAz;
    if (span < 0.0)
        span += 360.0;
    float into = mod(az - u_startAz + 360.0, 360.0);
    if (span < 360.0 && into > span)
        discard;
    vec4 color = texture(u_texture0, vec2(clamp(v_value, 0.0, 1.0), 0.5));
    // The sweep brightens towards its leading edge; where there is no echo there is
    // no colour.
    float trail = span > 0.0 ? into / span : 1.0;
    float echo = smoothstep(0.02, 0.12, v_value);
    fragColor = vec4(color.rgb, color.a * u_opacity * echo * (0.3 + 0.7 * trail));
}
