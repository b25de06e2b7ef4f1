#version 430 core

layout(std140, binding = 0) uniform Plane {
  vec4 weights;  // of red, green and blue, and the value of black
  int blockSize;  // pixels of the canvas per sample, on each axis
};
layout(binding = 0) uniform sampler2D canvas;

layout(location = 0) out vec4 value;

void main() {
  ivec2 first = ivec2(gl_FragCoord.xy) * blockSize;
  vec3 sum = vec3(0.0);
  for (int y = 0; y < blockSize; ++y) {
    for (int x = 0; x < blockSize; ++x) sum += texelFetch(canvas, first + ivec2(x, y), 0).rgb;
  }
  value = vec4(dot(sum / float(blockSize * blockSize), weights.rgb) + weights.a);
}
