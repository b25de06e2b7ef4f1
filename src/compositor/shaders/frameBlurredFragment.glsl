#version 430 core
#include "common.glsl"
#include "frameCommon.glsl"

// In pixels, from one tap to the next.
const float spacing = 2.0;

// The shutter is open around the frame's own instant, so that blurred and sharp parts of the
// composite stay together.
void main() {
  vec4 point = planePoint();
  vec2 motion = (screenPlace(mvp, point) - screenPlace(prevMVP, point)) * blur;
  int count = clamp(int(ceil(length(motion) / spacing)) + 1, 1, taps);
  mat2 gradient = pictureGradient();
  vec2 streak = gradient * motion / float(count);
  // Moving the matrix with the frame keeps the grain of the jitter from standing still.
  uvec2 seed = uvec2(gl_FragCoord.xy) + uvec2(5u, 3u) * frameIndex;
  vec2 place = picture + streak * (orderedNoise(seed) - 0.5 * float(count));
  vec3 sum = vec3(0.0);
  if (minified != 0) {
    for (int tap = 0; tap < count; ++tap) {
      sum += textureGrad(frame, place + streak * float(tap), gradient[0], gradient[1]).rgb;
    }
  } else {
    for (int tap = 0; tap < count; ++tap) {
      sum += textureLod(frame, place + streak * float(tap), 0.0).rgb;
    }
  }
  color = vec4(sum / float(count), coverage());
}
