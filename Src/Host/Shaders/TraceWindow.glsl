// The crawling window of an edge bundling path. The colour stream holds the trace colour and,
// in its fourth channel, the place of the vertex's item along the path (item i of n: i / n).
// u_traceHead is the place of the window's first item and u_traceScale is n / 4, so that
// (place - head) * scale runs from 0 at the window's first item, the tail, to 1 at its fifth,
// the head, which leads the way along the path.
uniform float u_traceScale;
uniform float u_traceHead;

// 0 at the tail of the window, 1 at its head.
float TraceWindowPosition(float place)
{
    return clamp((place - u_traceHead) * u_traceScale, 0.0, 1.0);
}

// The head shows the item's own colour at full strength; towards the tail it turns to the
// trace colour and fades.
vec4 TraceWindowColour(vec4 own, vec4 trace)
{
    float f = TraceWindowPosition(trace.a);
    return vec4(mix(trace.rgb, own.rgb, f), own.a * mix(0.2, 1.0, f * f));
}
