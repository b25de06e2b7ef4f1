#pragma once

#include <cstdint>
#include <vector>

#include "media/LibavHandles.h"
#include "media/StereoSample.h"

namespace vesk::media {

/// Turns decoded sound of one kind after another into stereo at soundRate. One channel is heard in
/// the middle, as loud on each side as it was recorded; the channels around the listener are mixed
/// down as in ITU-R BS.775-3, Annex 4. The first sample that comes out stands where the first that
/// went in does.
class StereoResampler {
 public:
  StereoResampler();
  StereoResampler(const StereoResampler&) = delete;
  StereoResampler(StereoResampler&&) noexcept = default;
  StereoResampler& operator=(const StereoResampler&) = delete;
  StereoResampler& operator=(StereoResampler&&) noexcept = default;
  ~StereoResampler() = default;

  /// Whether a frame is of the kind that went in last, so that the run can go on with it.
  [[nodiscard]] bool continues(const AVFrame& frame) const;

  /// Starts a run of frames like this one; false for a kind that cannot be converted.
  [[nodiscard]] bool start(const AVFrame& frame);
  /// Appends what is ready after this frame of the run. One that cannot be converted ends the run.
  void push(const AVFrame& frame, std::vector<StereoSample>& out);
  /// Appends the rest and ends the run.
  void finish(std::vector<StereoSample>& out);

 private:
  bool convert(const std::uint8_t** planes, int count, std::vector<StereoSample>& out);

  ResamplerPtr resampler_;  ///< null between runs
  FramePtr kind_;           ///< format, rate and layout of the run
};

}  // namespace vesk::media
