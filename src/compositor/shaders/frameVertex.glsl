#version 430 core
#include "common.glsl"

layout(std140, binding = 0) uniform Frame {
  mat4 mvp;
  mat4 prevMVP;
  float blur;
  float cornerRadius;
  float aspect;
  float rectX;
  float rectY;
  float rectW;
  float rectH;
  float canvasWidth;
  float canvasHeight;
};

layout(location = 0) out vec2 picture;

void main() {
  picture = quadCorner(gl_VertexID);
  vec4 clip = mvp * vec4(picture.x - 0.5, 0.5 - picture.y, 0.0, 1.0);
  gl_Position = vec4(clip.x, -clip.y, 0.0, clip.w);
}
