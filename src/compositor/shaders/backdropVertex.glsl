#version 430 core
#include "common.glsl"

layout(location = 0) out vec2 canvas;

void main() {
  canvas = quadCorner(gl_VertexID);
  gl_Position = canvasToClip(canvas);
}
