#version 330 compatibility
// The parts of an annotation: pixels around the anchor scaled to the view by u_worldMatrix,
// placed by u_viewMatrix (the anchor's place in view space for a screen-facing annotation,
// the camera's view for one lying in the world).
in vec3 a_position;
in vec2 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;

out vec2 v_uv;

void main()
{
    v_uv = a_texcoord0;
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(a_position, 1.0);
}
