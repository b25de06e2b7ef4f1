#version 430 core
#include "common.glsl"
#include "pipCommon.glsl"

layout(binding = 0) uniform sampler2D camera;

layout(location = 0) in vec2 local;
layout(location = 0) out vec4 color;

const vec3 borderColor = vec3(1.0);
const float borderOpacity = 0.92;

void main() {
  vec2 halfWindow = vec2(halfSize.x * aspect / halfSize.y, 1.0) * 0.5;
  float distance = roundedBoxDistance(local, halfWindow, cornerRadius);
  float pixel = max(abs(dFdx(local.x)), 1e-6);
  float inside = clamp(0.5 - distance / pixel, 0.0, 1.0);

  // Cover the window: the side on which the camera's picture is longer is cut.
  float windowAspect = halfWindow.x / halfWindow.y;
  vec2 crop = camAspect > windowAspect ? vec2(windowAspect / camAspect, 1.0)
                                       : vec2(1.0, camAspect / windowAspect);
  vec2 place = local / (2.0 * halfWindow) * crop;
  place.x = mirrored > 0.5 ? -place.x : place.x;
  vec3 picture = texture(camera, place + 0.5).rgb;

  float rim = clamp(0.5 + (distance + border) / pixel, 0.0, 1.0) * step(1e-6, border);
  vec3 window = mix(picture, borderColor, rim * borderOpacity);

  float fall = roundedBoxDistance(local - vec2(0.0, shadowDrop), halfWindow, cornerRadius);
  float shade = shadow * softShadow(fall, shadowReach) * (1.0 - inside);
  float alpha = inside + shade;
  color = vec4(window * inside / max(alpha, 1e-6), alpha);
}
