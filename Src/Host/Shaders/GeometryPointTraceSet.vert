#version 430 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity u_pointSize
// One vertex per timed position; the geometry shader expands it to a sprite.
#include "TracePoint.glsl"

in vec4 a_position;
in int a_attrib1; // the vertex of the window's last position, the same for the whole draw

out vec4 v_view;
out float v_alpha;
out float v_halfSize;
out float v_head;

void main()
{
    vec4 next;
    bool hasNext = NextPosition(gl_VertexID, 1, a_attrib1, next);
    v_view = TracePoint(a_position, hasNext, next, v_alpha, v_halfSize, v_head);
    gl_Position = v_view;
}
