#version 330 compatibility
#include "DensityGeometry.glsl"
