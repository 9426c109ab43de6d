#version 430 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity u_refHigh u_refLow
// A pulse as six vertices of two triangles, its world position in two floats (a_texcoord1
// high, a_texcoord2 low). a_position holds longitude and latitude in radians and the birth
// time; a_texcoord0 the corner, size and kind bytes; a_attrib1 the death time.
#include "DataSetMarker.glsl"

in vec3 a_position;
in vec4 a_texcoord0; // bytes, converted to float by the data-set binder
in vec4 a_color;
in vec3 a_texcoord1;
in vec3 a_texcoord2;
in float a_attrib1;

uniform mat4 u_projectionMatrix;

out vec2 f_corner;
out vec4 f_color;
out float f_age;
flat out int f_kind;

void main()
{
    vec2 corner = vec2(a_texcoord0.xy);
    f_kind = int(a_texcoord0.w);
    f_color = a_color;
    f_corner = corner;
    float birth = a_position.z, death = a_attrib1;
    bool alive = u_curTime >= birth && u_curTime < death;
    f_age = alive ? (u_curTime - birth) / max(death - birth, 1e-6) : 1.0;
    vec4 eye = TwoFloatToEye(a_texcoord1, a_texcoord2);
    vec2 offset = alive ? corner * HalfSizeMetres(UnsignedByte(a_texcoord0.z)) : vec2(0.0);
    gl_Position = u_projectionMatrix * (eye + vec4(offset, 0.0, 0.0));
}
