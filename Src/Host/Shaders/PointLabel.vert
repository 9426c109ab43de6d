#version 330 compatibility
// roles: u_projectionMode u_size - u_position
// One digit of a grid set's total, lying in the set's local frame: u_position is the top-left
// corner of the glyph's cell, a_texcoord0 = (s, t, cell width, cell height in pixels), and
// u_size is the length of a pixel there. t > 0 marks the cell's bottom row, s > 0 its right
// column.
in vec4 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform float u_size;
uniform vec3 u_position;

out vec2 v_uv;

void main()
{
    vec2 corner = vec2(a_texcoord0.x > 0.0 ? a_texcoord0.z : 0.0,
                       a_texcoord0.y > 0.0 ? -a_texcoord0.w : 0.0);
    vec3 local = u_position + vec3(corner * u_size, 0.0);
    v_uv = a_texcoord0.xy;
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(local, 1.0);
}
