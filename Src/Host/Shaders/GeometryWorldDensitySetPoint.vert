#version 330 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity u_refHigh u_refLow
// One vertex a density marker, expanded by the geometry stage, its world position in two
// floats (a_texcoord1 high, a_texcoord2 low); a_position holds longitude and latitude in
// radians and the time stamp, a_texcoord0 the size and kind bytes.
#include "DataSetMarker.glsl"

in vec3 a_position;
in vec4 a_texcoord0; // bytes, converted to float by the data-set binder
in vec4 a_color;
in vec3 a_texcoord1;
in vec3 a_texcoord2;

out vec4 v_eye;
out float v_halfSize;
out vec4 v_color;
flat out int v_kind;

void main()
{
    float fade = DensityFade(a_position.z);
    v_eye = TwoFloatToEye(a_texcoord1, a_texcoord2);
    v_halfSize = HalfSizeMetres(UnsignedByte(a_texcoord0.z));
    v_color = vec4(a_color.rgb, a_color.a * fade);
    v_kind = int(a_texcoord0.w);
    gl_Position = v_eye;
}
