#version 330 compatibility
#include "DensityMarker.glsl"
