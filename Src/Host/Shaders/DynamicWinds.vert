#version 330 compatibility
// roles: u_height u_levelShift u_colorTable u_projKind u_haze
// Particle trail segments: a_position is (longitude, latitude in degrees, speed level / 22,
// weight of the haze colour). The segment is placed on the sphere or the projected plane
// by the projection kind.
#include "GeoProject.glsl"

in vec4 a_position;

uniform mat4 u_worldMatrix; // reference centre already taken off
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform float u_height;     // metres above the surface
uniform float u_levelShift; // added to the level before the table look-up
uniform float u_projKind;

out float v_level;
out float v_haze;

void main()
{
    vec3 world = GeoToWorld(int(u_projKind + 0.5), vec3(a_position.xy, u_height));
    v_level = a_position.z + u_levelShift;
    v_haze = a_position.w;
    gl_Position = u_projectionMatrix * u_viewMatrix * (u_worldMatrix * vec4(world, 1.0));
}
