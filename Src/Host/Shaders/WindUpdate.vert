#version 330 compatibility
// roles: u_wind u_particles u_colorTable u_screen u_opacity u_particleRes u_windRes u_windMin u_windMax u_randSeed u_speedFactor u_dropRate u_dropRateBump
// The unit square as the whole target: one fragment per particle, reading its own texel.
in vec2 a_position;

out vec2 v_uv;

void main()
{
    v_uv = a_position;
    gl_Position = vec4(a_position * 2.0 - 1.0, 0.0, 1.0);
}
