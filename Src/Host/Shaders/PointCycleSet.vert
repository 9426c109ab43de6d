#version 430 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity
// A pulse as six vertices of two triangles, position local to the anchor and birth time in
// a_position, death time in a_attrib1. The corner, size, kind and colour bytes follow the
// position in each 24-byte record without an attribute of their own: they are read from
// the set's buffer, bound as storage block 0.
#include "DataSetMarker.glsl"

in vec4 a_position;
in float a_attrib1;

uniform mat4 u_projectionMatrix;

layout(std430, binding = 0) readonly buffer CycleVertices
{
    uint b_words[]; // six words a vertex
};

out vec2 f_corner;
out vec4 f_color;
out float f_age;
flat out int f_kind;

void main()
{
    uint bytes = b_words[gl_VertexID * 6 + 4];
    uint color = b_words[gl_VertexID * 6 + 5];
    vec2 corner = vec2(float(bitfieldExtract(int(bytes), 0, 8)),
                       float(bitfieldExtract(int(bytes), 8, 8)));
    float size = float((bytes >> 16) & 0xffu);
    f_kind = int(bytes >> 24);
    f_color = unpackUnorm4x8(color);
    f_corner = corner;
    float birth = a_position.w, death = a_attrib1;
    bool alive = u_curTime >= birth && u_curTime < death;
    f_age = alive ? (u_curTime - birth) / max(death - birth, 1e-6) : 1.0;
    vec4 eye = LocalToEye(a_position.xyz);
    // A pulse not alive collapses to a point: its two triangles have no area.
    vec2 offset = alive ? corner * HalfSizeMetres(size) : vec2(0.0);
    gl_Position = u_projectionMatrix * (eye + vec4(offset, 0.0, 0.0));
}
