#version 330 compatibility
// roles: u_refCenter u_windTexture phase dynamic u_projKind u_viewport u_lineWidth u_widthScale value level
// Stream lines drawn as triangle strips, two vertices per point of the line:
//   a_position: longitude, latitude (degrees), height (metres), distance along the line
//   a_attrib1:  longitude, latitude of the neighbouring point, side (-1 or 1), +1 when the
//               neighbour lies ahead, -1 when it lies behind
//   a_color:    across the line 0..1, along the whole line 0..1
#include "GeoProject.glsl"

in vec4 a_position;
in vec4 a_attrib1;
in vec4 a_color;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec3 u_refCenter;
uniform float u_projKind;
uniform vec4 u_viewport;   // 0, 0, width, height
uniform float u_lineWidth; // metres
uniform float u_widthScale;

out float v_along;
out float v_across;
out float v_fraction;

void main()
{
    int kind = int(u_projKind + 0.5);
    vec3 p = GeoToWorld(kind, a_position.xyz);
    vec3 q = GeoToWorld(kind, vec3(a_attrib1.xy, a_position.z));
    vec3 dir = (q - p) * a_attrib1.w;
    dir = length(dir) > 0.0 ? normalize(dir) : vec3(1.0, 0.0, 0.0);
    vec3 up = kind == 0 ? normalize(p) : vec3(0.0, 0.0, 1.0);
    vec3 side = cross(up, dir);
    side = length(side) > 0.0 ? normalize(side) : vec3(0.0, 1.0, 0.0);

    vec3 rel = (u_worldMatrix * vec4(p, 1.0)).xyz - u_refCenter;
    vec4 eye = u_viewMatrix * vec4(rel, 1.0);
    // At least two pixels wide, whatever the distance.
    float metresPerPixel = 2.0 * max(-eye.z, 1.0) / (u_projectionMatrix[1][1] * u_viewport.w);
    float width = max(u_lineWidth * u_widthScale, 2.0 * metresPerPixel);
    rel += side * a_attrib1.z * width * 0.5;

    v_along = a_position.w;
    v_across = a_color.x;
    v_fraction = a_color.y;
    gl_Position = u_projectionMatrix * u_viewMatrix * vec4(rel, 1.0);
}
