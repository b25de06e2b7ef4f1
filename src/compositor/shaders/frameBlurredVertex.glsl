#version 430 core
#include "common.glsl"
#include "frameCommon.glsl"

layout(location = 0) out vec2 picture;
layout(location = 1) out vec3 before;              // homogeneous, see below
layout(location = 2) flat out vec2 pixelsPerUnit;  // of the picture, at its centre

// A matrix without its depth, from the homogeneous plane to the homogeneous screen.
mat3 planeToScreen(mat4 matrix) { return mat3(matrix[0].xyw, matrix[1].xyw, matrix[3].xyw); }

void main() {
  picture = quadCorner(gl_VertexID);
  vec3 plane = vec3(picture.x - 0.5, 0.5 - picture.y, 1.0);
  mat3 now = planeToScreen(mvp);
  vec3 clip = now * plane;
  gl_Position = vec4(clip.x, -clip.y, 0.0, clip.z);
  // What the previous camera showed at this place of the screen. As a homogeneous point it is
  // linear over the plane, so that interpolation carries it to every pixel without error.
  vec3 planeBefore = inverse(planeToScreen(prevMVP)) * clip;
  before = vec3(planeBefore.x + 0.5 * planeBefore.z, 0.5 * planeBefore.z - planeBefore.y,
                planeBefore.z);
  vec2 halfCanvas = 0.5 * vec2(canvasWidth, canvasHeight);
  pixelsPerUnit = vec2(length(now[0].xy * halfCanvas), length(now[1].xy * halfCanvas)) / now[2].z;
}
