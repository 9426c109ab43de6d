#version 430 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity u_pointSize
// Six alike vertices per timed position, drawn as two triangles; the vertex number tells
// the corner of the sprite.
#include "TracePoint.glsl"

in vec4 a_position;
in int a_attrib1; // the first vertex of the window's last position, the same for the draw

uniform mat4 u_projectionMatrix;

out vec2 f_corner;
out float f_alpha;
out float f_head;

void main()
{
    vec2 corners[6] = vec2[](vec2(-1.0, -1.0), vec2(1.0, -1.0), vec2(1.0, 1.0), vec2(-1.0, -1.0),
                             vec2(1.0, 1.0), vec2(-1.0, 1.0));
    float halfSize;
    vec4 next;
    bool hasNext = NextPosition(gl_VertexID, 6, a_attrib1, next);
    vec4 view = TracePoint(a_position, hasNext, next, f_alpha, halfSize, f_head);
    f_corner = corners[gl_VertexID % 6];
    // A hidden position collapses to a point: its two triangles have no area.
    vec2 offset = f_alpha > 0.0 ? f_corner * halfSize : vec2(0.0);
    gl_Position = u_projectionMatrix * (view + vec4(offset, 0.0, 0.0));
}
