#version 430 compatibility
// A pulse over its life: a bright core that fades and a ring that spreads to the marker's
// edge and thins out (kind 0), or a disc that shrinks away (other kinds).
#include "CyclePulse.glsl"
