#version 430 compatibility
// roles: u_reserved u_earthPixels u_curTime u_startTime u_endTime u_traceTime u_opacity u_pointSize
// A camera-facing square around each visible position.
layout(points) in;
layout(triangle_strip, max_vertices = 4) out;

uniform mat4 u_projectionMatrix;

in vec4 v_view[];
in float v_alpha[];
in float v_halfSize[];
in float v_head[];

out vec2 f_corner;
out float f_alpha;
out float f_head;

void main()
{
    if (v_alpha[0] <= 0.0)
        return;
    vec2 corners[4] = vec2[](vec2(-1.0, -1.0), vec2(1.0, -1.0), vec2(-1.0, 1.0), vec2(1.0, 1.0));
    for (int i = 0; i < 4; ++i)
    {
        f_corner = corners[i];
        f_alpha = v_alpha[0];
        f_head = v_head[0];
        vec4 view = v_view[0] + vec4(corners[i] * v_halfSize[0], 0.0, 0.0);
        gl_Position = u_projectionMatrix * view;
        EmitVertex();
    }
    EndPrimitive();
}
