#version 430 core
#include "common.glsl"
#include "frameCommon.glsl"
#include "frameCoverage.glsl"

layout(binding = 0) uniform sampler2D frame;

layout(location = 0) in vec2 picture;
layout(location = 0) out vec4 color;

void main() { color = vec4(texture(frame, picture).rgb, coverage()); }
