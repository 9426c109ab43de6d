#version 330 compatibility
// roles: u_projectionMode u_earthPixels u_sunDirection u_growRatio
// Prisms of a cube set: positions in the set's local frame (z up), handed on untouched to
// the geometry stage, which grows them and puts them in place.
in vec3 a_position;
in vec3 a_attrib1;  // face normal, local frame
in vec2 a_texcoord0; // y: 1 on the top ring, 0 on the ground
in vec4 a_color;

out vec3 g_position;
out vec3 g_normal;
out float g_top;
out vec4 g_color;

void main()
{
    g_position = a_position;
    g_normal = a_attrib1;
    g_top = a_texcoord0.y;
    g_color = a_color;
    gl_Position = vec4(a_position, 1.0);
}
