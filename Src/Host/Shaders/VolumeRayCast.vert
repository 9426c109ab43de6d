#version 420 compatibility
// roles: u_rayPass u_screenSize u_stepSize u_texMatrix u_cameraPosition u_lightPosition u_volumeColor u_entry u_transfer u_colorTable u_volume
// The unit cube: a_position x and y from -0.5 to 0.5, z from 0 to 1, placed by the world
// matrix (camera-relative). Cube coordinates run 0..1 on all three axes.

in vec3 a_position;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform mat4 u_texMatrix;
uniform vec3 u_cameraPosition; // relative to the reference centre
uniform vec3 u_lightPosition;  // world position

out vec3 v_cube;
flat out vec3 v_eye;      // the eye in cube coordinates
flat out vec3 v_toLight;  // towards the light, in volume texture coordinates

void main()
{
    v_cube = a_position + vec3(0.5, 0.5, 0.0);
    mat4 toCube = inverse(u_worldMatrix);
    v_eye = (toCube * vec4(u_cameraPosition, 1.0)).xyz + vec3(0.5, 0.5, 0.0);
    // The light counts as a distant one: its direction is that of its position seen from
    // the world's origin (the sun, or overhead when the light follows the eye on the globe).
    vec3 light = length(u_lightPosition) > 0.0 ? normalize(u_lightPosition) : vec3(0.0, 0.0, 1.0);
    v_toLight = mat3(u_texMatrix) * (mat3(toCube) * light);
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(a_position, 1.0);
}
