#version 330 compatibility
// roles: u_projKind u_relativeHeight u_useTexture
// The application's polylines: a_position is (longitude, latitude in degrees, height in
// metres), placed for the projection kind, raised by u_relativeHeight, then moved by
// u_worldMatrix (which takes the reference centre off). Each vertex carries its colour.
#include "GeoProject.glsl"
#include "GeoFrame.glsl"

in vec3 a_position;
in vec4 a_color;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform int u_projKind;
uniform float u_relativeHeight;

out vec4 v_color;
out float v_facing;

void main()
{
    mat4 worldView = u_viewMatrix * u_worldMatrix;
    vec3 world = GeoToWorld(u_projKind, a_position + vec3(0.0, 0.0, u_relativeHeight));
    vec4 viewPos = worldView * vec4(world, 1.0);
    v_facing = FacesEye(u_projKind, viewPos.xyz, worldView) ? 1.0 : -1.0;
    v_color = a_color;
    gl_Position = u_projectionMatrix * viewPos;
}
