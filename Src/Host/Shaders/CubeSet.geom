#version 330 compatibility
// roles: u_projectionMode u_earthPixels u_sunDirection u_growRatio
// Grows each prism from its own ground by u_growRatio. A side triangle always holds a ground
// vertex, which gives the ground height; the top vertices are pulled down towards it. A cap
// triangle knows no ground, so caps are dropped and rebuilt at the grown height: the side
// face whose triangle carries both top corners of the face adds the wedge from those corners
// to the prism's centre, found half the face's width inward along the face normal.
layout(triangles) in;
layout(triangle_strip, max_vertices = 6) out;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform mat3 u_normalMatrix;
uniform float u_growRatio;

in vec3 g_position[];
in vec3 g_normal[];
in float g_top[];
in vec4 g_color[];

out vec3 f_eyePosition;
out vec3 f_eyeNormal;
out vec4 f_color;
out vec3 f_edge; // metres to the outlined edges: the two vertical ones and the top rim

void Emit(vec3 p, vec3 normal, vec4 color, vec3 edge)
{
    vec4 eye = u_viewMatrix * u_worldMatrix * vec4(p, 1.0);
    f_eyePosition = eye.xyz;
    f_eyeNormal = u_normalMatrix * normal;
    f_color = color;
    f_edge = edge;
    gl_Position = u_projectionMatrix * eye;
    EmitVertex();
}

void main()
{
    int tops = 0;
    float ground = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        if (g_top[i] > 0.5)
            ++tops;
        else
            ground = g_position[i].z;
    }
    if (tops == 3)
        return;
    float ratio = clamp(u_growRatio, 0.0, 1.0);
    vec3 p[3];
    float roof = ground;
    for (int i = 0; i < 3; ++i)
    {
        p[i] = g_position[i];
        if (g_top[i] > 0.5)
        {
            p[i].z = ground + (p[i].z - ground) * ratio;
            roof = p[i].z;
        }
    }

    // The face's two corners, seen from above.
    vec2 a = p[0].xy;
    vec2 b = distance(p[1].xy, a) > distance(p[2].xy, a) ? p[1].xy : p[2].xy;
    float width = distance(a, b);
    vec2 along = width > 0.0 ? (b - a) / width : vec2(0.0);
    for (int i = 0; i < 3; ++i)
    {
        float s = dot(p[i].xy - a, along);
        Emit(p[i], g_normal[i], g_color[i], vec3(s, width - s, roof - p[i].z));
    }
    EndPrimitive();

    if (tops != 2)
        return;
    int t0 = g_top[0] > 0.5 ? 0 : 1;
    int t1 = g_top[2] > 0.5 ? 2 : 1;
    vec3 c0 = p[t0], c1 = p[t1];
    vec3 centre = vec3(0.5 * (c0.xy + c1.xy) - normalize(g_normal[t0].xy) * 0.5 * width, roof);
    // Counter-clockwise seen from above, so the wedge faces up.
    if ((c1.x - c0.x) * (centre.y - c0.y) - (c1.y - c0.y) * (centre.x - c0.x) < 0.0)
    {
        vec3 swap = c0;
        c0 = c1;
        c1 = swap;
    }
    vec3 up = vec3(0.0, 0.0, 1.0);
    Emit(c0, up, g_color[t0], vec3(0.0));
    Emit(c1, up, g_color[t1], vec3(0.0));
    Emit(centre, up, g_color[t0], vec3(0.5 * width));
    EndPrimitive();
}
