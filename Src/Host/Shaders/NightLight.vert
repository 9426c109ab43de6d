#version 330 compatibility
// roles: u_rasterRect u_shadingScale u_valueInAlpha u_sceneMode
// A terrain tile with the night image over it: position relative to the tile, surface
// normal in world axes, logical point (longitude and latitude on the globe).
in vec3 a_position;
in vec3 a_attrib1;
in vec2 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec4 u_rasterRect; // left, top, width, height (logical)

out vec2 v_imageUV;
out vec3 v_normal;

void main()
{
    // Image row 0 is the top of the rectangle.
    v_imageUV = vec2((a_texcoord0.x - u_rasterRect.x) / u_rasterRect.z,
                     (u_rasterRect.y - a_texcoord0.y) / u_rasterRect.w);
    v_normal = a_attrib1;
    gl_Position = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(a_position, 1.0);
}
