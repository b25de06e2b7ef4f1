#version 430 core
#include "common.glsl"
#include "frameCommon.glsl"

void main() {
  mat2 gradient = pictureGradient();
  color = vec4(textureGrad(frame, picture, gradient[0], gradient[1]).rgb, coverage());
}
