#version 330 compatibility
// roles: u_projectionMode u_earthPixels u_traceScale u_traceHead
// The window of an edge bundling path as strokes of a constant width in pixels with round
// ends. Every vertex of a stroke lies on the segment's centre line, at one of its ends; it is
// pushed on the screen along the segment and across it by its stroke coordinates, in half
// widths, so the caps become discs round the ends.
#include "Ribbon.glsl"
#include "TraceWindow.glsl"

in vec4 a_position;  // the vertex's end of the segment, relative to the anchor; w the length
                     // of the path there
in vec3 a_attrib15;  // the segment's unit direction
in vec3 a_texcoord0; // along (-1, 0, +1) and across (-1, +1) in half widths; half the width
                     // in pixels
in vec4 a_attrib3;   // the stroke's colour
in vec4 a_color;     // the trace colour; alpha the segment's place along the path

noperspective out vec2 v_stroke; // pixels from the end point along and across the segment
flat out float v_reach;          // half the width, and the half pixel over which the rim fades
out vec4 v_color;

void main()
{
    vec4 clip = u_projectionMatrix * (u_viewMatrix * (u_worldMatrix * vec4(a_position.xyz, 1.0)));
    vec2 along = RibbonScreenDirection(clip, a_attrib15);
    vec2 across = vec2(-along.y, along.x);
    // A stroke without width (the padding after the last segment) stays a point.
    float reach = a_texcoord0.z > 0.0 ? a_texcoord0.z + 0.5 : 0.0;
    vec2 offset = (along * a_texcoord0.x + across * a_texcoord0.y) * reach;
    clip.xy += offset * 2.0 / max(u_viewportSize, vec2(1.0)) * clip.w;
    gl_Position = clip;
    v_stroke = a_texcoord0.xy * reach;
    v_reach = reach;
    v_color = TraceWindowColour(a_attrib3, a_color);
}
