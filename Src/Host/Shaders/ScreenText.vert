#version 330 compatibility
// roles: u_viewportSize u_screenAnchor u_shadow
// A line of glyphs laid out by eGLCanvas::Text in pixels, standing upright on the screen at
// an anchor: the world point that u_worldMatrix moves the origin to, or, with
// u_screenAnchor.z > 0.5, the window pixel (u_screenAnchor.x, u_screenAnchor.y) counted from
// the bottom-left. The anchor is snapped to a pixel corner so that glyph texels meet pixels.
// With u_shadow.z > 0.5 the line is drawn moved by (u_shadow.x, u_shadow.y) pixels in
// translucent black: drawn first, it keeps light text readable over bright ground.
in vec3 a_position;   // pixels from the anchor, y up
in vec2 a_texcoord0;  // glyph cell
in vec4 a_color;

uniform mat4 u_worldMatrix;
uniform mat4 u_viewMatrix;
uniform mat4 u_projectionMatrix;
uniform vec2 u_viewportSize;
uniform vec3 u_screenAnchor;
uniform vec3 u_shadow;

out vec2 v_uv;
out vec4 v_color;

void main()
{
    vec4 clip = vec4(0.0, 0.0, 0.0, 1.0);
    vec2 anchor = u_screenAnchor.xy;
    if (u_screenAnchor.z < 0.5)
    {
        clip = u_projectionMatrix * u_viewMatrix * u_worldMatrix * vec4(0.0, 0.0, 0.0, 1.0);
        anchor = (clip.xy / clip.w * 0.5 + 0.5) * u_viewportSize;
    }
    vec2 px = floor(anchor + 0.5) + a_position.xy;
    if (u_shadow.z > 0.5)
        px += u_shadow.xy;
    vec2 ndc = px / u_viewportSize * 2.0 - 1.0;
    gl_Position = vec4(ndc * clip.w, clip.z, clip.w);
    v_uv = a_texcoord0;
    v_color = u_shadow.z > 0.5 ? vec4(0.0, 0.0, 0.0, a_color.a * 0.75) : a_color;
}
