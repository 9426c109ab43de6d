#version 330 compatibility
// roles: u_projectionMode u_earthPixels u_traceScale u_traceHead
// The window of an edge bundling path as round markers: squares laid out on the ground by the
// point tessellator, cut to discs, coloured and faded by their place in the window.
#include "TraceWindow.glsl"

in vec4 a_position;  // corner, relative to the anchor; w the length of the path so far
in vec2 a_texcoord0; // the corner, -1 / +1 across and along
in vec4 a_attrib3;   // the marker's colour
in vec4 a_color;     // the trace colour; alpha the point's place along the path

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;

out vec2 v_corner;
out vec4 v_color;

void main()
{
    gl_Position = u_projectionMatrix * (u_viewMatrix * (u_worldMatrix * vec4(a_position.xyz, 1.0)));
    v_corner = a_texcoord0;
    v_color = TraceWindowColour(a_attrib3, a_color);
}
