#version 330 compatibility
// Textured quads tinted per vertex: a_position through the world, view and projection
// matrices, a_texcoord0 into the texture on unit 0, a_color the tint.
in vec3 a_position;
in vec2 a_texcoord0;
in vec4 a_color;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;

out vec2 v_uv;
out vec4 v_color;

void main()
{
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(a_position, 1.0);
    v_uv = a_texcoord0;
    v_color = a_color;
}
