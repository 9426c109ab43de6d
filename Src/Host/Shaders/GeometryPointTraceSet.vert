#version 330 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity u_pointSize
// One vertex per timed position; the geometry shader expands it to a sprite.
#include "TracePoint.glsl"

in vec4 a_position;
in vec4 a_attrib1; // the following position of the track

out vec4 v_view;
out float v_alpha;
out float v_halfSize;
out float v_head;

void main()
{
    v_view = TracePoint(a_position, a_attrib1, v_alpha, v_halfSize, v_head);
    gl_Position = v_view;
}
