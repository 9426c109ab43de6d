// Ribbons of a constant width on the screen, for line programs whose sets hand their widths
// in the set's pixel unit. A vertex lies on the centre line; it is pushed sideways in clip
// space, along the corner's miter, so that the ribbon keeps its width in pixels at any
// distance and the two segments meeting at a corner share their edge points.
uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec2 u_viewportSize;      // pixels, from the host
uniform float u_renderResolution; // metres per pixel at the look-at point, from the host
uniform float u_sceneMode;        // 1 globe, 2 plane map, from the host

// The set's pixel unit: the world's size (40030198.0419408 m) over the resolution, as a
// logical length, which is degrees of arc on the globe. A width divided by it is in pixels.
float RibbonPixelUnit()
{
    float unit = 40030198.0419408 / max(u_renderResolution, 1e-20);
    return u_sceneMode < 1.5 ? unit / (6378137.0 * 0.017453292519943295) : unit;
}

// Unit direction on the screen (pixels, y up) in which a local direction leaves a point that
// projects to `clip`: the derivative of the perspective divide. Zero for no direction.
vec2 RibbonScreenDirection(vec4 clip, vec3 direction)
{
    vec4 d = u_projectionMatrix * (u_viewMatrix * (u_worldMatrix * vec4(direction, 0.0)));
    vec2 s = (d.xy * clip.w - clip.xy * d.w) * u_viewportSize;
    float length2 = dot(s, s);
    return length2 > 0.0 ? s * inversesqrt(length2) : vec2(0.0);
}

// Clip position of a ribbon vertex. `along` < 0 marks the start of its segment, whose
// direction is then `dirOut`, and > 0 its end (direction `dirIn`); `side` is -1 or +1 across
// the ribbon. The corner point lies 1 / cos(half the turn) half widths out, up to
// `miterLimit`; sharper corners are cut there.
vec4 RibbonPosition(vec3 local, vec2 dirIn, vec2 dirOut, float along, float side,
                    float halfWidth, float miterLimit)
{
    vec4 clip = u_projectionMatrix * (u_viewMatrix * (u_worldMatrix * vec4(local, 1.0)));
    vec2 screenIn = RibbonScreenDirection(clip, vec3(dirIn, 0.0));
    vec2 screenOut = RibbonScreenDirection(clip, vec3(dirOut, 0.0));
    vec2 normalIn = vec2(-screenIn.y, screenIn.x);
    vec2 normalOut = vec2(-screenOut.y, screenOut.x);
    vec2 normal = along < 0.0 ? normalOut : normalIn;
    vec2 sum = normalIn + normalOut;
    vec2 miter = dot(sum, sum) > 1e-6 ? normalize(sum) : normal;
    float reach = 1.0 / max(dot(miter, normal), 1.0 / max(miterLimit, 1.0));
    vec2 offset = side * halfWidth * reach * miter;
    clip.xy += offset * 2.0 / max(u_viewportSize, vec2(1.0)) * clip.w;
    return clip;
}
