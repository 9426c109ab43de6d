#version 330 compatibility
// roles: u_projKind u_maskRect u_backgroundColor u_blockRect
// The globe mask's patch: a_position.xy runs 0..1 across the block rectangle u_blockRect
// (left, top, width, height in degrees), x from its left edge, y down from its top edge,
// placed on the ground by projection kind. Its depth is that of the same point lifted above
// the highest relief the "Globe" program draws, so that the cover lies over mountains too.
#include "GeoProject.glsl"

in vec3 a_position;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform int u_projKind;
uniform vec4 u_blockRect;

out vec2 v_geo;
out vec3 v_view;

// 255 height steps of 1000 m shrunk by the relief's base (R / (R + 5000000)), and a margin.
const float kReliefTop = 150000.0;

void main()
{
    vec2 geo = vec2(u_blockRect.x + a_position.x * u_blockRect.z,
                    u_blockRect.y - a_position.y * u_blockRect.w);
    mat4 worldView = u_viewMatrix * u_worldMatrix;
    vec4 view = worldView * vec4(GeoToWorld(u_projKind, vec3(geo, 0.0)), 1.0);
    vec4 lifted = u_projectionMatrix * worldView * vec4(GeoToWorld(u_projKind, vec3(geo, kReliefTop)), 1.0);
    gl_Position = u_projectionMatrix * view;
    if (lifted.w > 0.0 && gl_Position.w > 0.0)
        gl_Position.z = max(lifted.z / lifted.w, -0.999999) * gl_Position.w;
    v_geo = geo;
    v_view = view.xyz;
}
