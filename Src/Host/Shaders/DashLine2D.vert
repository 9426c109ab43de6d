#version 330 compatibility
// roles: u_positionKind u_opacity u_width u_streamWeight u_feather u_dashLength u_gapLength u_dashOffset u_miterLimit u_edge
// Lines on the plane map as ribbons of a constant width in pixels, solid or dashed, in the
// ribbon vertex layout of the line grow set: u_color, or the colour stream by
// u_streamWeight.
#include "Ribbon.glsl"

in vec4 a_position;  // local x, y, z; the line's total length
in vec4 a_attrib4;   // unit direction in (x, y) and out (z, w), times 126
in vec2 a_attrib15;  // length along the line at the segment's start and at its end
in vec4 a_texcoord0; // along sign, side sign, turning angles at the start and end (x 126)
in vec4 a_color;

uniform int u_positionKind; // always 0: positions are local to the anchor; not read
uniform vec4 u_color;
uniform float u_opacity;
uniform float u_width; // in the pixel unit
uniform float u_streamWeight;
uniform float u_feather;
uniform float u_miterLimit;
uniform float u_edge; // in the pixel unit

noperspective out float v_across;
out float v_along;
flat out float v_halfWidth;
flat out float v_fade;
out vec4 v_color;

void main()
{
    float unit = RibbonPixelUnit();
    float fade = u_feather > 0.5 ? u_edge / unit : 0.0;
    float halfWidth = 0.5 * (u_width / unit + fade);
    float side = a_texcoord0.y;
    gl_Position = RibbonPosition(a_position.xyz, a_attrib4.xy / 126.0, a_attrib4.zw / 126.0,
                                 a_texcoord0.x, side, halfWidth, u_miterLimit);
    v_across = side * halfWidth;
    v_along = a_texcoord0.x < 0.0 ? a_attrib15.x : a_attrib15.y;
    v_halfWidth = halfWidth;
    v_fade = fade;
    v_color = mix(u_color, a_color, clamp(u_streamWeight, 0.0, 1.0));
    v_color.a *= u_opacity;
}
