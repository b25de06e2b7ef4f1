#version 430 core

layout(location = 0) in vec2 local;
layout(location = 1) flat in vec4 color;
layout(location = 2) flat in vec4 shape;
layout(location = 0) out vec4 result;

// Opacity of a soft band around a circle.
float band(float distance, float radius, float width) {
  float offset = (distance - radius) / width;
  return exp(-offset * offset);
}

// Opacity inside a circle with an edge one pixel wide.
float disc(float distance, float radius, float pixel) {
  return clamp((radius - distance) / pixel + 0.5, 0.0, 1.0);
}

float annulus(float distance, float radius, float halfWidth, float pixel) {
  return clamp((halfWidth - abs(distance - radius)) / pixel + 0.5, 0.0, 1.0);
}

void main() {
  float progress = shape.x;
  float distance = length(local);
  float pixel = max(abs(dFdx(local.x)), 1e-6);
  float left = 1.0 - progress;
  float radius = 1.0 - left * left * left;  // fast at the click, then settling
  float fade = left * (2.0 - left);         // full at first, gone at the end

  float body;
  float edge;
  if (shape.y < 0.5) {  // a wave: a crest, a weaker one behind it, water between
    edge = radius;
    body = max(band(distance, radius - 0.1, 0.13), 0.55 * band(distance, radius * 0.55, 0.1));
    body = max(body, 0.22 * disc(distance, radius, pixel));
    body *= 1.0 - smoothstep(radius, radius + 0.1, distance);
  } else if (shape.y < 1.5) {  // a ring that grows thinner
    float halfWidth = mix(0.11, 0.035, progress);
    edge = radius + halfWidth;
    body = annulus(distance, radius, halfWidth, pixel);
  } else {  // a dot that swells a little
    edge = 0.45 + 0.4 * radius;
    body = disc(distance, edge, pixel);
  }
  float outline = 0.8 * shape.z * annulus(distance, edge + 0.025, 0.025, pixel);

  // The colour lies over the white outline.
  float bodyAlpha = body * color.a * fade;
  float outlineAlpha = outline * color.a * fade * (1.0 - bodyAlpha);
  float alpha = bodyAlpha + outlineAlpha;
  result = vec4((color.rgb * bodyAlpha + vec3(outlineAlpha)) / max(alpha, 1e-6), alpha);
}
