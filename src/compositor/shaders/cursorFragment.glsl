#version 430 core

layout(std140, binding = 0) uniform Cursor {
  vec2 origin;
  vec2 size;
  float opacity;
};
layout(binding = 0) uniform sampler2D bitmap;

layout(location = 0) in vec2 place;
layout(location = 0) out vec4 color;

void main() {
  // Filtering needs premultiplied colours, blending straight ones.
  vec4 premultiplied = texture(bitmap, place);
  color = vec4(premultiplied.rgb / max(premultiplied.a, 1e-6), premultiplied.a * opacity);
}
