#version 400 compatibility
// A terrain tile classified by tiling: position relative to the tile, surface normal in world
// axes, logical point. The raster lies over u_rasterRect; the tiling textures repeat once per
// tile of level u_tilingLevel of the tile quadtree, whose level-0 square is u_indexRect.
in vec3 a_position;
in vec3 a_attrib1;
in vec2 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec4 u_rasterRect; // left, top, width, height (logical)
uniform vec4 u_indexRect;  // the level-0 square, same form
uniform float u_tilingLevel;

out vec2 v_rasterUV;
out vec2 v_repeat;
out vec2 v_geo;
out vec3 v_normal;
out vec3 v_toEye;

void main()
{
    vec4 relative = u_worldMatrix * vec4(a_position, 1.0);
    vec3 eye = (inverse(u_viewMatrix) * vec4(0.0, 0.0, 0.0, 1.0)).xyz;
    // Raster row 0 is the top of its rectangle; so is the top row of each repeat.
    v_rasterUV = vec2((a_texcoord0.x - u_rasterRect.x) / u_rasterRect.z,
                      (u_rasterRect.y - a_texcoord0.y) / u_rasterRect.w);
    float tiles = exp2(clamp(u_tilingLevel, 0.0, 24.0));
    v_repeat = vec2((a_texcoord0.x - u_indexRect.x) / u_indexRect.z,
                    (u_indexRect.y - a_texcoord0.y) / u_indexRect.w) * tiles;
    v_geo = a_texcoord0;
    v_normal = a_attrib1;
    v_toEye = eye - relative.xyz;
    gl_Position = u_projectionMatrix * u_viewMatrix * relative;
}
