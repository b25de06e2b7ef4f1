#version 430 core
#include "common.glsl"

layout(std140, binding = 0) uniform Backdrop {
  vec4 colorA;
  vec4 colorB;
  vec4 rect;
  float cornerRadius;
  float shadow;
  float aspect;
  float isGradient;
};

layout(location = 0) in vec2 canvas;
layout(location = 0) out vec4 color;

// In canvas heights: how far the shadow reaches, and how far it falls below the picture.
const float shadowReach = 0.075;
const float shadowDrop = 0.022;

float shadowAt(vec2 place) {
  vec2 stretch = vec2(aspect, 1.0);
  vec2 halfSize = rect.zw * 0.5 * stretch;
  vec2 fromCenter = (place - rect.xy - rect.zw * 0.5) * stretch - vec2(0.0, shadowDrop);
  float distance = roundedBoxDistance(fromCenter, halfSize, cornerRadius * rect.w);
  return shadow * softShadow(distance, shadowReach);
}

void main() {
  // The gradient runs from the top left to the bottom right.
  vec3 base = mix(colorA.rgb, colorB.rgb, isGradient * dot(canvas, vec2(0.5)));
  vec3 shaded = base * (1.0 - shadowAt(canvas));
  // Eight bits are too coarse for dark gradients; dithering hides the steps between them.
  float dither = (orderedNoise(uvec2(gl_FragCoord.xy)) - 0.5) / 255.0;
  bool isFlat = isGradient == 0.0 && shaded == base;
  color = vec4(isFlat ? base : shaded + dither, 1.0);
}
