#version 430 core
#include "common.glsl"
#include "pipCommon.glsl"

layout(location = 0) out vec2 local;  // window heights from the centre, y down

void main() {
  float height = 2.0 * halfSize.y;
  vec2 halfWindow = halfSize * vec2(aspect, 1.0) / height;
  float room = 0.01 + (shadow > 0.0 ? shadowReach + shadowDrop : 0.0);
  local = (quadCorner(gl_VertexID) * 2.0 - 1.0) * (halfWindow + room);
  gl_Position = canvasToClip(center + local * height / vec2(aspect, 1.0));
}
