#version 430 core
#include "common.glsl"
#include "frameCommon.glsl"
#include "frameCoverage.glsl"
#include "frameBlur.glsl"

layout(location = 0) out vec4 color;

void main() { color = vec4(blurredPicture(), coverage()); }
