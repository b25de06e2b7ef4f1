// How much of the pixel lies inside the content rectangle with its rounded corners.
float coverage() {
  vec2 canvasSize = vec2(canvasWidth, canvasHeight);
  vec2 halfSize = vec2(rectW, rectH) * 0.5 * canvasSize;
  vec2 center = vec2(rectX, rectY) * canvasSize + halfSize;
  float radius = cornerRadius * rectH * canvasHeight;
  return clamp(0.5 - roundedBoxDistance(gl_FragCoord.xy - center, halfSize, radius), 0.0, 1.0);
}
