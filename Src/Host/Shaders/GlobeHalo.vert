#version 330 compatibility
// roles: u_radius u_alpha
// The halo quad: every corner sits at the Earth's projected centre, and a_texcoord0 (-1..1)
// widens it to the radius in pixels plus the width of the glow. u_worldMatrix is the
// translation to the centre taken after the host's pixel ortho (pixel 0 -> clip -1): its
// diagonal holds clip units per pixel and its last column the centre less that one.
in vec3 a_position;
in vec2 a_texcoord0;

uniform mat4 u_worldMatrix;
uniform float u_radius; // pixels from the centre to the horizon

out vec2 v_offset; // pixels from the centre

// Width of the glow outside the limb, as a part of the radius (at least two pixels).
const float kGlowWidth = 0.18;

void main()
{
    float span = u_radius + max(u_radius * kGlowWidth, 2.0);
    vec2 perPixel = vec2(u_worldMatrix[0][0], u_worldMatrix[1][1]);
    vec2 centre = u_worldMatrix[3].xy + 1.0;
    v_offset = a_texcoord0 * span;
    gl_Position = vec4((centre + a_position.xy + v_offset) * perPixel - 1.0, 0.0, 1.0);
}
