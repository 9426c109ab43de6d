#version 420 compatibility
// roles: u_sunDirection
// The relief sphere of the visual globe: a_position is the world position in metres with the
// relief baked in, a_texcoord0 the picture coordinate (u west to east, v north to south),
// a_attrib1 the unit normal in world axes.
in vec3 a_position;
in vec2 a_texcoord0;
in vec3 a_attrib1;

uniform mat4 u_worldMatrix; // translation by minus the reference centre
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform mat3 u_normalMatrix;

out vec2 v_uv;
out vec3 v_normal;
out vec3 v_toEye;

void main()
{
    vec4 relative = u_worldMatrix * vec4(a_position, 1.0);
    // The eye sits at the origin of view space.
    vec3 eye = (inverse(u_viewMatrix) * vec4(0.0, 0.0, 0.0, 1.0)).xyz;
    v_uv = a_texcoord0;
    v_normal = u_normalMatrix * a_attrib1;
    v_toEye = eye - relative.xyz;
    gl_Position = u_projectionMatrix * u_viewMatrix * relative;
}
