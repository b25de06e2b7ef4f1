#version 430 core

layout(std140, binding = 0) uniform Conversion {
  mat4 toRgb;         // from (Y, Cb, Cr, 1) as sampled to red, green, blue
  vec2 chromaScale;   // chroma texture coordinates per luma pixel
  vec2 chromaOffset;  // chroma texture coordinates of luma pixel (0, 0)
};
layout(binding = 0) uniform sampler2D luma;
layout(binding = 1) uniform sampler2D blueChroma;
layout(binding = 2) uniform sampler2D redChroma;

layout(location = 0) out vec4 color;

void main() {
  ivec2 pixel = ivec2(gl_FragCoord.xy);
  vec2 place = vec2(pixel) * chromaScale + chromaOffset;
  vec4 components = vec4(texelFetch(luma, pixel, 0).r, textureLod(blueChroma, place, 0.0).r,
                         textureLod(redChroma, place, 0.0).r, 1.0);
  color = vec4((toRgb * components).rgb, 1.0);
}
