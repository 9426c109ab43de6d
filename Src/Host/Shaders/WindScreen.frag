#version 330 compatibility
// roles: u_wind u_particles u_colorTable u_screen u_opacity u_particleRes u_windRes u_windMin u_windMax u_randSeed u_speedFactor u_dropRate u_dropRateBump
// The trail picture of the last frame, faded by u_opacity. Every channel that is not yet 0
// drops by at least one step, so trails die out in 8 bits too, where a plain product would
// round back up and leave a lasting ghost.
in vec2 v_uv;

uniform sampler2D u_screen;
uniform float u_opacity;

out vec4 fragColor;

void main()
{
    vec4 c = texture(u_screen, v_uv);
    fragColor = floor(c * 255.0 * u_opacity) / 255.0;
}
