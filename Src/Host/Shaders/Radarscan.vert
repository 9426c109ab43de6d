#version 330 compatibility
// roles: u_refHigh u_refLow u_projKind u_radarPos u_opacity u_startAz u_endAz
// The sweep surface arrives in geographic coordinates: a_position is (longitude,
// latitude in degrees, height in metres), a_texcoord0.x the echo value 0..1 that
// picks the colour from the colour table.
#include "GeoProject.glsl"

in vec3 a_position;
in vec2 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec3 u_refHigh;
uniform vec3 u_refLow;
uniform int u_projKind;

out vec2 v_geo;
out float v_value;

void main()
{
    vec3 world = (u_worldMatrix * vec4(GeoToWorld(u_projKind, a_position), 1.0)).xyz;
    // Subtract the reference centre in two parts so the large numbers cancel first.
    vec3 relative = (world - u_refHigh) - u_refLow;
    v_geo = a_position.xy;
    v_value = a_texcoord0.x;
    gl_Position = u_projectionMatrix * u_viewMatrix * vec4(relative, 1.0);
}
