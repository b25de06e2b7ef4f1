#version 430 core
#include "common.glsl"

struct Ripple {
  vec2 center;
  vec4 color;
  float progress;
  float maxRadius;
  float style;
  float stroke;
  vec2 aspect;
};
layout(std140, binding = 0) uniform Ripples { Ripple ripples[24]; };

layout(location = 0) out vec2 local;
layout(location = 1) flat out vec4 color;
layout(location = 2) flat out vec4 shape;  // progress, style, stroke

// Room for the stroke and the soft edge around the final radius, in radii.
const float margin = 1.2;

void main() {
  Ripple ripple = ripples[gl_InstanceID];
  local = (quadCorner(gl_VertexID) * 2.0 - 1.0) * margin;
  color = ripple.color;
  shape = vec4(ripple.progress, ripple.style, ripple.stroke, 0.0);
  vec2 radius = ripple.maxRadius * vec2(ripple.aspect.x / ripple.aspect.y, 1.0);
  gl_Position = canvasToClip(ripple.center + local * radius);
}
