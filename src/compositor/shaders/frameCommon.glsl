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
layout(std140, binding = 1) uniform Sampling {
  int taps;
  uint frameIndex;
  int minified;
};
layout(binding = 0) uniform sampler2D frame;

layout(location = 0) in vec2 picture;
layout(location = 0) out vec4 color;

// How much of the pixel lies inside the content rectangle with its rounded corners.
float coverage() {
  vec2 canvasSize = vec2(canvasWidth, canvasHeight);
  vec2 halfSize = vec2(rectW, rectH) * 0.5 * canvasSize;
  vec2 center = vec2(rectX, rectY) * canvasSize + halfSize;
  float radius = cornerRadius * rectH * canvasHeight;
  return clamp(0.5 - roundedBoxDistance(gl_FragCoord.xy - center, halfSize, radius), 0.0, 1.0);
}

// Screen place, in pixels with y down, of a plane point under a matrix.
vec2 screenPlace(mat4 matrix, vec4 point) {
  vec4 clip = matrix * point;
  return vec2(clip.x, -clip.y) / clip.w * 0.5 * vec2(canvasWidth, canvasHeight);
}

vec4 planePoint() { return vec4(picture.x - 0.5, 0.5 - picture.y, 0.0, 1.0); }

// The change of the picture coordinate from one pixel to the next: column 0 to the right, column 1
// down. It is the inverse of the projection's derivative, taken exactly rather than from the
// neighbouring pixels.
mat2 pictureGradient() {
  vec4 clip = mvp * planePoint();
  vec2 ndc = clip.xy / clip.w;
  vec2 halfCanvas = vec2(canvasWidth, -canvasHeight) * 0.5;
  vec2 alongX = (mvp[0].xy - ndc * mvp[0].w) / clip.w * halfCanvas;
  vec2 alongY = (mvp[1].xy - ndc * mvp[1].w) / clip.w * halfCanvas;
  // The plane's y points up, the picture's down.
  return inverse(mat2(alongX, -alongY));
}
