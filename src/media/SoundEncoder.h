#pragma once

#include <cstdint>
#include <expected>
#include <span>
#include <vector>

#include "media/LibavHandles.h"

namespace vesk::media {

/// Of a track of sound that is recorded.
struct SoundTrackSettings {
  int channels = 2;
  std::int64_t bitRate = 0;  ///< bits per second
  bool operator==(const SoundTrackSettings&) const = default;
};

/// Encodes samples at soundRate as AAC (low complexity). The packets are stamped in samples, from
/// the first one on; encoding starts up before zero. Failures are libav's codes.
class SoundEncoder {
 public:
  [[nodiscard]] static std::expected<SoundEncoder, int> open(const SoundTrackSettings& settings);

  [[nodiscard]] const AVCodecContext& codec() const { return *codec_; }

  /// Takes in samples, those of one instant side by side, and appends the packets that are ready.
  [[nodiscard]] int encode(std::span<const float> samples, std::vector<PacketPtr>& ready);
  /// Appends the rest. Nothing may be encoded afterwards.
  [[nodiscard]] int finish(std::vector<PacketPtr>& ready);

 private:
  SoundEncoder(CodecPtr codec, FramePtr frame);
  int clearFrame();
  int encodeFilled(std::vector<PacketPtr>& ready);

  CodecPtr codec_;
  FramePtr frame_;
  int filled_ = 0;             ///< instants in the frame
  std::int64_t position_ = 0;  ///< of the frame's first instant
};

}  // namespace vesk::media
