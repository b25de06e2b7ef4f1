#pragma once

namespace vesk::media {

/// Sound of two channels at one instant; ±1 is full scale.
struct StereoSample {
  float left = 0;
  float right = 0;
  bool operator==(const StereoSample&) const = default;
};

/// Samples a second of all sound that is worked on.
inline constexpr int soundRate = 48'000;

}  // namespace vesk::media
