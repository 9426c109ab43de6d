#version 330 compatibility
// roles: u_projectionMode u_size - u_position
// One cell of a grid set: the unit quad (corners -1..1 in a_texcoord0.xy) scaled to the
// cell's side u_size around its centre u_position, both in the set's local frame.
in vec4 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform float u_size;
uniform vec3 u_position;

out vec2 v_corner;

void main()
{
    vec3 local = u_position + vec3(a_texcoord0.xy * (0.5 * u_size), 0.0);
    v_corner = a_texcoord0.xy;
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(local, 1.0);
}
