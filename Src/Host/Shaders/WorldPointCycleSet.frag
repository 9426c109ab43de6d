#version 430 compatibility
// As the local pulses: a core that fades and a spreading ring, or a shrinking disc.
#include "CyclePulse.glsl"
