#version 430 core
#include "common.glsl"

layout(std140, binding = 0) uniform Cursor {
  vec2 origin;
  vec2 size;
  float opacity;
};

layout(location = 0) out vec2 place;

void main() {
  place = quadCorner(gl_VertexID);
  gl_Position = canvasToClip(origin + place * size);
}
