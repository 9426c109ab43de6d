#version 330 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity
// A density marker as six vertices of two triangles: a_position local to the anchor with
// the time stamp in w, a_texcoord0 the corner, size and kind bytes, a_color its colour.
#include "DataSetMarker.glsl"

in vec4 a_position;
in vec4 a_texcoord0; // bytes, converted to float by the data-set binder
in vec4 a_color;

uniform mat4 u_projectionMatrix;

out vec2 f_corner;
out vec4 f_color;
flat out int f_kind;

void main()
{
    float fade = DensityFade(a_position.w);
    f_corner = vec2(a_texcoord0.xy);
    f_color = vec4(a_color.rgb, a_color.a * fade);
    f_kind = int(a_texcoord0.w);
    // A hidden marker collapses to a point: its two triangles have no area.
    float h = fade > 0.0 ? HalfSizeMetres(UnsignedByte(a_texcoord0.z)) : 0.0;
    gl_Position = u_projectionMatrix * (LocalToEye(a_position.xyz) + vec4(f_corner * h, 0.0, 0.0));
}
