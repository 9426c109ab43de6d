#version 330 compatibility
// Expands each kept point into a screen-facing square of u_pointSize world units, with
// the atlas tile named by the point's id. A tile whose category is switched off in the
// visibility picture (unit 1, same atlas coordinates) gives nothing.
layout(points) in;
layout(triangle_strip, max_vertices = 4) out;

in vec4 v_viewPos[];
flat in int v_tile[];
flat in int v_keep[];

uniform mat4 u_projectionMatrix;
uniform sampler2D u_texture1;
uniform float u_pointSize;
uniform float u_gridSize;

out vec2 g_uv;

void main()
{
    if (v_keep[0] == 0)
        return;
    float grid = max(u_gridSize, 1.0);
    vec2 cell = vec2(mod(float(v_tile[0]), grid), floor(float(v_tile[0]) / grid));
    if (textureLod(u_texture1, (cell + 0.5) / grid, 0.0).r < 0.5)
        return;
    float halfSize = u_pointSize * 0.5;
    vec3 centre = v_viewPos[0].xyz;
    // Lift the icon towards the eye by its half size so that the ground it stands on
    // does not cut it.
    centre -= normalize(centre) * halfSize;
    for (int i = 0; i < 4; ++i)
    {
        vec2 corner = vec2(i == 1 || i == 3 ? 1.0 : -1.0, i >= 2 ? 1.0 : -1.0);
        gl_Position = u_projectionMatrix * vec4(centre + vec3(corner * halfSize, 0.0), 1.0);
        // Picture row 0 (the top of a tile) is texture row 0.
        g_uv = (cell + vec2(corner.x * 0.5 + 0.5, 0.5 - corner.y * 0.5)) / grid;
        EmitVertex();
    }
    EndPrimitive();
}
