#version 330 compatibility
// The mesh's triangles wind clockwise seen from outside, while the frame culls back faces
// with counter-clockwise fronts. Emitting each triangle in reverse order turns its outside
// to the front without moving any vertex, so every height step stays where it was read.
layout(triangles) in;
layout(triangle_strip, max_vertices = 3) out;

in vec3 g_world[];
in vec2 g_geo[];

out vec3 v_world;
out vec2 v_geo;

void main()
{
    for (int k = 2; k >= 0; --k)
    {
        gl_Position = gl_in[k].gl_Position;
        v_world = g_world[k];
        v_geo = g_geo[k];
        EmitVertex();
    }
    EndPrimitive();
}
