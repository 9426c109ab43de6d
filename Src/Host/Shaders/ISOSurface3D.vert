#version 330 compatibility
// roles: u_sunDirection
// A finished mesh in model units: u_worldMatrix stands it, camera-relative; u_normalMatrix
// turns its normals into eye space.

in vec3 a_position;
in vec3 a_attrib1; // normal

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform mat3 u_normalMatrix;

out vec3 v_normal;
out vec3 v_eye;

void main()
{
    vec4 eye = u_viewMatrix * u_worldMatrix * vec4(a_position, 1.0);
    v_eye = eye.xyz;
    v_normal = u_normalMatrix * a_attrib1;
    gl_Position = u_projectionMatrix * eye;
}
