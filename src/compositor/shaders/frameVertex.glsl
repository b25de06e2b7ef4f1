#version 430 core
#include "common.glsl"
#include "frameCommon.glsl"

layout(location = 0) out vec2 picture;

void main() {
  picture = quadCorner(gl_VertexID);
  vec4 clip = mvp * vec4(picture.x - 0.5, 0.5 - picture.y, 0.0, 1.0);
  gl_Position = vec4(clip.x, -clip.y, 0.0, clip.w);
}
