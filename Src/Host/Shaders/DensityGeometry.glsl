// Expands one density marker vertex into a camera-facing square, unless it is hidden.
layout(points) in;
layout(triangle_strip, max_vertices = 4) out;

uniform mat4 u_projectionMatrix;

in vec4 v_eye[];
in float v_halfSize[];
in vec4 v_color[];
flat in int v_kind[];

out vec2 f_corner;
out vec4 f_color;
flat out int f_kind;

void main()
{
    if (v_color[0].a <= 0.0)
        return;
    vec2 corners[4] = vec2[](vec2(-1.0, -1.0), vec2(1.0, -1.0), vec2(-1.0, 1.0), vec2(1.0, 1.0));
    for (int i = 0; i < 4; ++i)
    {
        f_corner = corners[i];
        f_color = v_color[0];
        f_kind = v_kind[0];
        gl_Position = u_projectionMatrix * (v_eye[0] + vec4(corners[i] * v_halfSize[0], 0.0, 0.0));
        EmitVertex();
    }
    EndPrimitive();
}
