#version 330 compatibility
// roles: u_pointSize u_refCenter u_reserved u_gridSize u_projMode
// One record per point: a_position is (longitude, latitude in degrees, height in metres,
// visible flag), a_attrib1 the icon tile, -1 for an empty slot. The vertex stage places
// the point in view space and decides whether it is drawn; the geometry stage turns it
// into an icon.
#include "GeoProject.glsl"

in vec4 a_position;
in int a_attrib1;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform vec4 u_refCenter;
uniform float u_reserved; // extra height, 0
uniform float u_gridSize;
uniform float u_projMode;

out vec4 v_viewPos;
flat out int v_tile;
flat out int v_keep;

void main()
{
    int kind = int(u_projMode + 0.5);
    vec3 geo = vec3(a_position.xy, a_position.z + u_reserved);
    vec3 world = (u_worldMatrix * vec4(GeoToWorld(kind, geo), 1.0)).xyz;
    v_viewPos = u_viewMatrix * vec4(world - u_refCenter.xyz, 1.0);
    int tiles = int(u_gridSize + 0.5);
    bool keep = a_attrib1 >= 0 && a_attrib1 < tiles * tiles && a_position.w >= 0.5;
    if (kind == 0)
    {
        // On the globe a point beyond the horizon is not drawn.
        vec3 centre = (u_worldMatrix * vec4(0.0, 0.0, 0.0, 1.0)).xyz - u_refCenter.xyz;
        vec3 centreView = (u_viewMatrix * vec4(centre, 1.0)).xyz;
        keep = keep && dot(v_viewPos.xyz - centreView, -v_viewPos.xyz) > 0.0;
    }
    v_tile = a_attrib1;
    v_keep = keep ? 1 : 0;
    gl_Position = v_viewPos;
}
