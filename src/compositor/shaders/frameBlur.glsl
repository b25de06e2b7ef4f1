layout(std140, binding = 1) uniform Sampling {
  int taps;
  uint frameIndex;
};
layout(binding = 0) uniform sampler2D frame;

layout(location = 0) in vec2 picture;
layout(location = 1) in vec3 before;
layout(location = 2) flat in vec2 pixelsPerUnit;

// From one tap to the next, in pixels or, where the picture is magnified, in its texels: finer steps
// would find nothing between them.
const float spacing = 2.0;

// The mean of the picture along the way that it has moved under this pixel while the shutter was
// open. It is open around the frame's own instant, so that blurred and sharp parts of the composite
// stay together.
vec3 blurredPicture() {
  vec2 streak = (picture - before.xy / before.z) * blur;
  vec2 detail = min(pixelsPerUnit, vec2(textureSize(frame, 0)));
  int count = clamp(int(ceil(length(streak * detail) / spacing + 0.5)), 1, taps);
  vec2 stride = streak / float(count);
  // Jitter over half the way between taps: filtering smooths the other half. Moving the matrix with
  // the frame keeps its grain from standing still.
  uvec2 seed = uvec2(gl_FragCoord.xy) + uvec2(5u, 3u) * frameIndex;
  float jitter = count > 1 ? mix(0.25, 0.75, orderedNoise(seed)) : 0.5;
  vec2 place = picture + stride * (jitter - 0.5 * float(count));
  vec2 right = dFdx(picture);
  vec2 down = dFdy(picture);
  vec3 sum = vec3(0.0);
  for (int tap = 0; tap < count; ++tap) {
    sum += textureGrad(frame, place, right, down).rgb;
    place += stride;
  }
  return sum / float(count);
}
