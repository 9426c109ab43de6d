#version 400 compatibility
// A terrain tile of the surface globe: position relative to the tile, surface normal in
// world axes, logical point (longitude and latitude).
in vec3 a_position;
in vec3 a_attrib1;
in vec2 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec4 u_rasterRect; // where the pictures lie: left, top, width, height (logical)

out vec2 v_uv;
out vec2 v_geo;
out vec3 v_normal;
out vec3 v_toEye;

void main()
{
    vec4 relative = u_worldMatrix * vec4(a_position, 1.0);
    vec3 eye = (inverse(u_viewMatrix) * vec4(0.0, 0.0, 0.0, 1.0)).xyz;
    // Picture row 0 is the top of the rectangle.
    v_uv = vec2((a_texcoord0.x - u_rasterRect.x) / u_rasterRect.z,
                (u_rasterRect.y - a_texcoord0.y) / u_rasterRect.w);
    v_geo = a_texcoord0;
    v_normal = a_attrib1;
    v_toEye = eye - relative.xyz;
    gl_Position = u_projectionMatrix * u_viewMatrix * relative;
}
