// The two triangles of a quad, its corners in 0…1 with (0, 0) the top left.
vec2 quadCorner(int vertex) {
  const vec2 corners[6] =
      vec2[](vec2(0, 0), vec2(1, 0), vec2(0, 1), vec2(0, 1), vec2(1, 0), vec2(1, 1));
  return corners[vertex];
}

// Canvas fractions, y down, to clip space. Row 0 of the target is the top of the picture, so that
// y keeps its direction here.
vec4 canvasToClip(vec2 canvas) { return vec4(canvas * 2.0 - 1.0, 0.0, 1.0); }

// Signed distance to a box with rounded corners, negative inside. With the corner's circle taken as
// the distance to a smaller box, only one quadrant needs looking at.
float roundedBoxDistance(vec2 point, vec2 halfSize, float radius) {
  float corner = min(radius, min(halfSize.x, halfSize.y));
  vec2 beyond = abs(point) - (halfSize - corner);
  return length(max(beyond, 0.0)) + min(max(beyond.x, beyond.y), 0.0) - corner;
}

// Darkness of a soft shadow at a distance from the edge of what casts it, much like that of a blur
// twice `reach` wide: half on the edge itself, none beyond `reach`.
float softShadow(float distance, float reach) { return 1.0 - smoothstep(-reach, reach, distance); }

// Rank of a pixel in an 8×8 Bayer matrix, as a value in (0, 1) that is even over any small area.
// A function of whole numbers, so that it comes out alike on every device.
float orderedNoise(uvec2 pixel) {
  uint diagonal = pixel.x ^ pixel.y;
  uint rank = ((diagonal & 1u) << 5) | ((pixel.y & 1u) << 4) | ((diagonal & 2u) << 2) |
              ((pixel.y & 2u) << 1) | ((diagonal & 4u) >> 1) | ((pixel.y & 4u) >> 2);
  return (float(rank) + 0.5) / 64.0;
}
