#version 330 compatibility
// roles: u_textureMatrix
// A mesh with position, texture coordinate and colour; the texture matrix moves the
// texture along it from frame to frame.
in vec3 a_position;
in vec2 a_texcoord0;
in vec4 a_color;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform mat4 u_textureMatrix;

out vec2 v_texcoord;
out vec4 v_color;

void main()
{
    v_texcoord = (u_textureMatrix * vec4(a_texcoord0, 0.0, 1.0)).xy;
    v_color = a_color;
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(a_position, 1.0);
}
