#version 330 compatibility
// The track up to the current time, in white; older parts fade towards half strength
// over the span from u_timeStart to the current time. Parts beyond the globe's horizon
// are not drawn (the pass draws without a depth test).
in float v_time;
in float v_facing;

uniform float u_timeStart;
uniform float u_currentTime;

out vec4 fragColor;

void main()
{
    if (v_time > u_currentTime || v_facing < 0.0)
        discard;
    float span = u_currentTime - u_timeStart;
    float age = span > 0.0 ? clamp((u_currentTime - v_time) / span, 0.0, 1.0) : 0.0;
    fragColor = vec4(1.0, 1.0, 1.0, mix(0.95, 0.5, age));
}
