#pragma once

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "media/CaptureEncoder.h"
#include "media/EncoderPace.h"

namespace vesk::media {

/// The encoder for a take, and what was tried for it.
struct EncoderSelection {
  struct Trial {
    CaptureEncoder encoder;
    EncoderPace pace;
  };
  CaptureEncoder encoder;
  std::vector<Trial> trials;  ///< in their order, up to the one that was taken
};

/// The first of the candidates whose pace holds, or the last one where none does; the last is not
/// measured. There must be one.
[[nodiscard]] EncoderSelection selectEncoder(
    std::span<const CaptureEncoder> candidates, int fps,
    const std::function<EncoderPace(const CaptureEncoder&)>& measure);

/// What was tried with what outcome, for the log.
[[nodiscard]] std::string describe(const EncoderSelection& selection, int fps);

/// The encoder for a take on this machine. What was measured once is remembered in `memory`, a
/// file of its own, per size and rate, until the machine's processor, graphics devices or FFmpeg
/// change. Without a memory that can be read it is measured anew, which takes about a second. Says
/// in the log what was chosen and why.
[[nodiscard]] CaptureEncoder encoderOfThisMachine(const PictureTrackSettings& settings,
                                                  const std::filesystem::path& memory);

}  // namespace vesk::media
