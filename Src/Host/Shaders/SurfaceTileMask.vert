#version 330 compatibility
// roles: u_rasterRect u_opacity u_hasMask
// A terrain tile: position relative to the tile, logical point (longitude and latitude on the
// globe, map metres on the plane).
in vec3 a_position;
in vec2 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec4 u_rasterRect; // left, top, width, height (logical)

out vec2 v_rasterUV;

void main()
{
    // Picture row 0 is the top of the rectangle.
    v_rasterUV = vec2((a_texcoord0.x - u_rasterRect.x) / u_rasterRect.z,
                      (u_rasterRect.y - a_texcoord0.y) / u_rasterRect.w);
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(a_position, 1.0);
}
