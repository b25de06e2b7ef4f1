#pragma once

#include <cstdint>
#include <deque>
#include <expected>
#include <vector>

#include "media/CaptureEncoder.h"
#include "media/I420Picture.h"
#include "media/LibavHandles.h"

namespace vesk::media {

/// Ticks a second of the stamps of captured pictures.
inline constexpr int pictureTicks = 120'000;

/// Encodes pictures at whatever times they come, in their order and without reordering. The
/// encoder itself counts pictures and knows no times: its rate control gives each its share of the
/// bit rate, however long it stands. Failures are libav's codes.
class PictureEncoder {
 public:
  [[nodiscard]] static std::expected<PictureEncoder, int> open(
      const CaptureEncoder& choice, const PictureTrackSettings& settings);

  [[nodiscard]] const AVCodecContext& codec() const { return *codec_; }
  /// What the file is to call the codec.
  [[nodiscard]] unsigned tag() const { return tag_; }

  /// Takes in a picture of the settings' size and appends the packets that are ready, stamped in
  /// ticks and without a duration. The picture may be changed when this returns.
  [[nodiscard]] int encode(const I420Picture& picture, std::int64_t time, bool isKey,
                           std::vector<PacketPtr>& ready);
  /// Appends the rest. Nothing may be encoded afterwards.
  [[nodiscard]] int finish(std::vector<PacketPtr>& ready);

 private:
  PictureEncoder(CodecPtr codec, CaptureEncoder::Place place, unsigned tag);
  [[nodiscard]] std::expected<FramePtr, int> frameOf(const I420Picture& picture) const;
  int send(const AVFrame* frame, std::vector<PacketPtr>& ready);

  CodecPtr codec_;
  CaptureEncoder::Place place_;
  unsigned tag_;
  std::int64_t count_ = 0;
  std::deque<std::int64_t> times_;  ///< of the pictures that are in the encoder
};

}  // namespace vesk::media
