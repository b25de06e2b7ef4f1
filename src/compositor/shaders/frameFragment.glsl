#version 430 core
#include "common.glsl"
#include "frameCommon.glsl"

void main() { color = vec4(textureLod(frame, picture, 0.0).rgb, coverage()); }
