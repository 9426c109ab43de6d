#version 330 compatibility
// roles: u_timeStart u_currentTime
// The typhoon's track as a line: a_position is (longitude, latitude in degrees, time).
// Each vertex carries its time to the fragments, which keep the part of the line up to
// u_currentTime. u_sceneProjKind comes from the host.
#include "GeoProject.glsl"
#include "GeoFrame.glsl"

in vec3 a_position;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform float u_sceneProjKind;

out float v_time;
out float v_facing;

void main()
{
    int kind = int(u_sceneProjKind + 0.5);
    mat4 worldView = u_viewMatrix * u_worldMatrix;
    vec4 viewPos = worldView * vec4(GeoToWorld(kind, vec3(a_position.xy, 0.0)), 1.0);
    v_time = a_position.z;
    v_facing = FacesEye(kind, viewPos.xyz, worldView) ? 1.0 : -1.0;
    gl_Position = u_projectionMatrix * viewPos;
}
