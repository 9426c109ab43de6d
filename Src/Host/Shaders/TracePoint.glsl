// Shared by the point trace programs: where the sprite of one timed position stands and
// how strongly it shows. A position is local to the set's anchor, its time stamp in w;
// `next` is the following position of the same window. The position after the clock only
// guides the head, which slides from the last passed position towards it; the tail fades
// from the head back over u_traceTime. The last position of a window has no next: once
// the clock has passed it (the track has ended) it stays the head, fading with the tail.
uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform float u_earthPixels;
uniform float u_curTime;
uniform float u_startTime;
uniform float u_endTime;
uniform float u_traceTime;
uniform float u_pointSize;

const float kEarthCircumference = 40075016.68557849;

// The set's vertex buffer, read as a whole.
layout(std430, binding = 0) readonly buffer TraceVertices
{
    vec4 b_vertices[];
};

// The position after that of `vertex`, `step` vertices on, read no further than `last`,
// the first vertex of the window's last position. False when there is none.
bool NextPosition(int vertex, int step, int last, out vec4 next)
{
    int i = min(vertex + step, last);
    next = b_vertices[max(i, 0)];
    return i > vertex;
}

// Returns the sprite centre in eye coordinates; alpha 0 hides the position.
vec4 TracePoint(vec4 pos, bool hasNext, vec4 next, out float alpha, out float halfSize,
                out float head)
{
    float t = pos.w;
    vec3 p = pos.xyz;
    head = 0.0;
    if (t > u_curTime || t < u_startTime || t > u_endTime)
        alpha = 0.0;
    else if (!hasNext)
    {
        alpha = clamp(1.0 - (u_curTime - t) / max(u_traceTime, 1e-6), 0.0, 1.0);
        head = 1.0;
    }
    else if (next.w > u_curTime && next.w > t)
    {
        p = mix(p, next.xyz, clamp((u_curTime - t) / (next.w - t), 0.0, 1.0));
        alpha = 1.0;
        head = 1.0;
    }
    else
        alpha = clamp(1.0 - (u_curTime - t) / max(u_traceTime, 1e-6), 0.0, 1.0);
    // The sprite keeps its size in pixels at the look-at point.
    float metresPerPixel = kEarthCircumference / max(u_earthPixels, 1e-6);
    halfSize = 0.5 * u_pointSize * metresPerPixel * (head > 0.5 ? 1.0 : mix(0.3, 0.8, alpha));
    return u_viewMatrix * u_worldMatrix * vec4(p, 1.0);
}
