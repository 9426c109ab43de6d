#version 330 compatibility
// roles: u_wind u_particles u_colorTable u_screen u_opacity u_particleRes u_windRes u_windMin u_windMax u_randSeed u_speedFactor u_dropRate u_dropRateBump
// One point per particle into the trail picture (the whole map; row 0 is the north edge),
// found from its number in the state texture, and coloured by its speed.
#include "WindState.glsl"

in float a_position; // the particle's number

uniform sampler2D u_wind;
uniform sampler2D u_particles;
uniform float u_particleRes;
uniform vec2 u_windMin;
uniform vec2 u_windMax;

out float v_speed;

void main()
{
    gl_PointSize = 1.0;
    v_speed = 0.0;
    if (!HasWind(u_wind))
    {
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0); // outside: nothing is drawn
        return;
    }
    int side = max(int(u_particleRes + 0.5), 1);
    int number = int(a_position + 0.5);
    vec2 place = DecodeState(texelFetch(u_particles, ivec2(number % side, number / side), 0));
    v_speed = SpeedShare(WindAt(u_wind, place, u_windMin, u_windMax), u_windMin, u_windMax);
    gl_Position = vec4(place * 2.0 - 1.0, 0.0, 1.0);
}
