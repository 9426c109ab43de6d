#version 330 compatibility
// The stretch of a moving line that is shown: from the end of the tail (u_traceTime behind
// the clock, not before u_startTime) to the head (the clock, not after u_endTime). The head
// thus lies between the last two positions of the window, and a finished line keeps its
// last position as its head. The line has the colour of its kind and fades along the
// tail; with a texture, the picture runs along the tail from the head (left edge) to its
// end (right edge).
uniform vec4 u_color;
uniform float u_opacity;
uniform float u_textureEnabled;
uniform sampler2D u_texture0;
uniform float u_curTime;
uniform float u_startTime;
uniform float u_endTime;
uniform float u_traceTime;

in float f_time;

out vec4 o_color;

void main()
{
    float head = min(u_curTime, u_endTime);
    float tail = max(u_curTime - u_traceTime, u_startTime);
    if (f_time > head || f_time < tail)
        discard;
    float age = clamp((u_curTime - f_time) / max(u_traceTime, 1e-6), 0.0, 1.0);
    vec4 color = u_color;
    if (u_textureEnabled > 0.5)
        color *= texture(u_texture0, vec2(age, 0.5));
    o_color = vec4(color.rgb, color.a * (1.0 - age) * u_opacity);
}
