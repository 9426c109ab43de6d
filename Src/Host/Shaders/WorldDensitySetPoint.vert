#version 330 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity u_refHigh u_refLow
// A density marker as six vertices of two triangles, its world position in two floats
// (a_texcoord1 high, a_texcoord2 low); a_position holds longitude and latitude in radians
// and the time stamp, a_texcoord0 the corner, size and kind bytes.
#include "DataSetMarker.glsl"

in vec3 a_position;
in vec4 a_texcoord0; // bytes, converted to float by the data-set binder
in vec4 a_color;
in vec3 a_texcoord1;
in vec3 a_texcoord2;

uniform mat4 u_projectionMatrix;

out vec2 f_corner;
out vec4 f_color;
flat out int f_kind;

void main()
{
    float fade = DensityFade(a_position.z);
    f_corner = vec2(a_texcoord0.xy);
    f_color = vec4(a_color.rgb, a_color.a * fade);
    f_kind = int(a_texcoord0.w);
    float h = fade > 0.0 ? HalfSizeMetres(UnsignedByte(a_texcoord0.z)) : 0.0;
    vec4 eye = TwoFloatToEye(a_texcoord1, a_texcoord2);
    gl_Position = u_projectionMatrix * (eye + vec4(f_corner * h, 0.0, 0.0));
}
