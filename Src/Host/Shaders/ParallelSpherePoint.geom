#version 330 compatibility
// Expands a point into a picture.
//
// u_pictureMode 0: the whole picture on unit 0 (the symbol), drawn whatever the point's
// time. 1: the tile of the level (a_position.w) in a picture of u_textColumns square
// tiles per row, row 0 at the top; shown once u_currentTime has reached the point.
//
// u_sizeMode 0: the picture lies flat on the ground, parallel to the sphere, u_pointSize
// metres across, north up, turned by u_rotateAngle counter-clockwise seen from above (and
// mirrored and turned the other way south of the equator, as storms turn there).
// 1: the picture faces the screen and is u_pointSize / 100000 of the view's height.
//
// Points beyond the globe's horizon, points of size 0 and points with no place (NaN)
// give nothing.
#include "GeoProject.glsl"
#include "GeoFrame.glsl"

layout(points) in;
layout(triangle_strip, max_vertices = 4) out;

in vec4 v_point[];

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform sampler2D u_texture0;
uniform float u_timeStart;
uniform float u_currentTime;
uniform float u_pictureMode;
uniform float u_sizeMode;
uniform float u_rotateAngle;
uniform float u_pointSize;
uniform float u_textColumns;
uniform float u_sceneProjKind;

out vec2 g_uv;
out vec2 g_local;
out float g_alpha;

// Texture rectangle (left, top, width, height) of the picture; false when the level has
// no tile.
bool PictureRect(float level, out vec4 rect)
{
    rect = vec4(0.0, 0.0, 1.0, 1.0);
    if (u_pictureMode < 0.5)
        return true;
    float columns = max(floor(u_textColumns + 0.5), 1.0);
    ivec2 size = textureSize(u_texture0, 0);
    float rows = size.x > 0 ? max(floor(float(size.y) * columns / float(size.x) + 0.5), 1.0) : 1.0;
    float tile = floor(level + 0.5);
    if (tile < 0.0 || tile >= columns * rows)
        return false;
    rect = vec4(mod(tile, columns) / columns, floor(tile / columns) / rows, 1.0 / columns,
                1.0 / rows);
    return true;
}

void main()
{
    vec4 p = v_point[0];
    bool symbol = u_pictureMode < 0.5;
    if (any(isnan(p)) || u_pointSize <= 0.0 || (!symbol && p.z > u_currentTime))
        return;
    vec4 rect;
    if (!PictureRect(p.w, rect))
        return;

    int kind = int(u_sceneProjKind + 0.5);
    mat4 worldView = u_viewMatrix * u_worldMatrix;
    vec3 world = GeoToWorld(kind, vec3(p.xy, 0.0));
    vec4 viewPos = worldView * vec4(world, 1.0);
    if (!FacesEye(kind, viewPos.xyz, worldView))
        return;

    // Level pictures of the track behind the typhoon fade a little with their age.
    float span = u_currentTime - u_timeStart;
    float age = symbol || span <= 0.0 ? 0.0 : clamp((u_currentTime - p.z) / span, 0.0, 1.0);
    bool south = p.y < 0.0;

    vec3 east, north, up;
    GeoFrame(kind, p.xy, east, north, up);
    float spin = south ? -u_rotateAngle : u_rotateAngle;
    mat2 turn = mat2(cos(spin), sin(spin), -sin(spin), cos(spin));
    vec4 clipCentre = u_projectionMatrix * viewPos;
    // Half the picture in view units for the screen-facing size (w is the depth scale).
    float halfView = u_pointSize * 1e-5 * clipCentre.w / u_projectionMatrix[1][1];

    for (int i = 0; i < 4; ++i)
    {
        vec2 corner = vec2(i == 1 || i == 3 ? 1.0 : -1.0, i >= 2 ? 1.0 : -1.0);
        if (u_sizeMode < 0.5)
        {
            vec2 ground = turn * corner * (u_pointSize * 0.5);
            vec3 at = world + east * ground.x + north * ground.y;
            gl_Position = u_projectionMatrix * (worldView * vec4(at, 1.0));
        }
        else
            gl_Position = u_projectionMatrix * vec4(viewPos.xy + corner * halfView, viewPos.zw);
        // Picture row 0 (its top, to the north) is texture row 0.
        vec2 st = vec2((south && u_sizeMode < 0.5 ? -corner.x : corner.x) * 0.5 + 0.5,
                       0.5 - corner.y * 0.5);
        g_uv = rect.xy + st * rect.zw;
        g_local = corner;
        g_alpha = mix(1.0, 0.7, age);
        EmitVertex();
    }
    EndPrimitive();
}
