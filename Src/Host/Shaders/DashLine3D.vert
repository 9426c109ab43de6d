#version 330 compatibility
// roles: u_refCenter u_dashed u_geographic u_relativeHeight u_dashLength u_gapLength u_dashOffset u_opacity u_lineWidth u_feather u_projKind u_viewport u_totalLength
// A polyline as a strip of constant width in pixels. One vertex buffer holds every point
// twice (sides -1 and +1) with a phantom point at each end, and is read three times at
// shifted offsets: a_position is the previous point, a_attrib1 this one, a_color the next,
// a_texcoord0 (length along the line, side). Each vertex moves sideways on the screen along
// the mitre of its two segments, half the width plus the soft edge.
#include "GeoProject.glsl"

in vec3 a_position;
in vec3 a_attrib1;
in vec2 a_texcoord0;
in vec3 a_color;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec3 u_refCenter;
uniform int u_geographic;
uniform float u_relativeHeight;
uniform float u_lineWidth;
uniform float u_feather;
uniform float u_projKind;
uniform vec4 u_viewport;

out float v_across; // pixels from the middle of the line
out float v_length;
out float v_facing;

// World point relative to the reference centre.
vec3 Place(vec3 p, int kind)
{
    vec3 world;
    if (u_geographic != 0)
        world = GeoToWorld(kind, p + vec3(0.0, 0.0, u_relativeHeight));
    else if (kind == 0)
        world = p + normalize(p) * u_relativeHeight;
    else
        world = p + vec3(0.0, 0.0, u_relativeHeight);
    return world - u_refCenter;
}

vec2 ToPixels(vec4 clip)
{
    return (clip.xy / clip.w * 0.5 + 0.5) * u_viewport.zw + u_viewport.xy;
}

// Left-hand normal of a screen direction, or of the other one where it has no length.
vec2 Normal(vec2 d, vec2 fallback)
{
    float len = length(d);
    if (len < 1e-4)
        return fallback;
    return vec2(-d.y, d.x) / len;
}

void main()
{
    int kind = int(u_projKind + 0.5);
    mat4 toClip = u_projectionMatrix * u_viewMatrix * u_worldMatrix;
    vec3 here = Place(a_attrib1, kind);
    vec4 c0 = toClip * vec4(Place(a_position, kind), 1.0);
    vec4 c1 = toClip * vec4(here, 1.0);
    vec4 c2 = toClip * vec4(Place(a_color, kind), 1.0);

    // On the globe, points whose ground faces away from the eye lie beyond the horizon.
    v_facing = 1.0;
    if (kind == 0)
    {
        mat4 worldView = u_viewMatrix * u_worldMatrix;
        vec3 viewPos = (worldView * vec4(here, 1.0)).xyz;
        vec3 centre = (worldView * vec4(-u_refCenter, 1.0)).xyz;
        v_facing = dot(viewPos - centre, -viewPos) > 0.0 ? 1.0 : -1.0;
    }
    if (c1.w <= 0.0)
    {
        gl_Position = vec4(0.0, 0.0, 2.0, 1.0); // behind the eye: outside the clip volume
        v_across = 0.0;
        v_length = a_texcoord0.x;
        return;
    }

    vec2 p1 = ToPixels(c1);
    vec2 p0 = c0.w > 0.0 ? ToPixels(c0) : p1;
    vec2 p2 = c2.w > 0.0 ? ToPixels(c2) : p1;
    vec2 n1 = Normal(p2 - p1, vec2(0.0, 1.0));
    vec2 n0 = Normal(p1 - p0, n1);
    n1 = Normal(p2 - p1, n0);
    vec2 mitre = n0 + n1;
    mitre = length(mitre) < 1e-3 ? n1 : normalize(mitre);
    // The mitre is longer than the half width by 1 / cos of half the turn; sharp turns are
    // held to four times the half width.
    float stretch = 1.0 / max(dot(mitre, n1), 0.25);
    float halfWidth = 0.5 * u_lineWidth + u_feather;
    float side = a_texcoord0.y;
    vec2 px = p1 + mitre * halfWidth * stretch * side;

    v_across = side * halfWidth;
    v_length = a_texcoord0.x;
    vec2 ndc = (px - u_viewport.xy) / u_viewport.zw * 2.0 - 1.0;
    gl_Position = vec4(ndc * c1.w, c1.z, c1.w);
}
