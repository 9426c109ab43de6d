#version 330 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity
// One vertex a density marker, expanded by the geometry stage: a_position local to the
// anchor with the time stamp in w, a_texcoord0 the size and kind bytes, a_color its colour.
#include "DataSetMarker.glsl"

in vec4 a_position;
in vec4 a_texcoord0; // bytes, converted to float by the data-set binder
in vec4 a_color;

out vec4 v_eye;
out float v_halfSize;
out vec4 v_color;
flat out int v_kind;

void main()
{
    float fade = DensityFade(a_position.w);
    v_eye = LocalToEye(a_position.xyz);
    v_halfSize = HalfSizeMetres(UnsignedByte(a_texcoord0.z));
    v_color = vec4(a_color.rgb, a_color.a * fade);
    v_kind = int(a_texcoord0.w);
    gl_Position = v_eye;
}
