#version 330 compatibility
// roles: u_wind u_particles u_colorTable u_screen u_opacity u_particleRes u_windRes u_windMin u_windMax u_randSeed u_speedFactor u_dropRate u_dropRateBump
// The colour table (one pixel wide, calm in row 0, full speed in the last) at the
// particle's speed; white without a table (an empty unit reads as no texture or as a single
// black pixel, so a table needs two rows or more).
in float v_speed;

uniform sampler2D u_colorTable;

out vec4 fragColor;

void main()
{
    float rows = float(textureSize(u_colorTable, 0).y);
    if (rows < 2.0)
    {
        fragColor = vec4(1.0);
        return;
    }
    fragColor = texture(u_colorTable, vec2(0.5, (v_speed * (rows - 1.0) + 0.5) / rows));
}
