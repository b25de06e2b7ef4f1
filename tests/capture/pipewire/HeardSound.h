#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "capture/SoundSource.h"

namespace vesk::capture::pipewire::test {

/// Listens to a source of sound and keeps all that comes.
class HeardSound {
 public:
  struct Block {
    media::HostTime stamp{};
    media::HostTime arrival{};
    std::optional<std::int64_t> position;
    std::vector<float> samples;
  };

  /// @throws std::runtime_error with the source's words when it refuses.
  explicit HeardSound(SoundSource& source);

  [[nodiscard]] std::vector<Block> blocks() const;
  /// The first channel of all blocks, one behind the other.
  [[nodiscard]] std::vector<float> firstChannel() const;
  [[nodiscard]] std::vector<std::string> ends() const;

 private:
  std::size_t channels_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::vector<Block> blocks_;
  std::vector<std::string> ends_;
  std::unique_ptr<Listening> listening_;
};

/// The part of a signal's power that is of one frequency, 0…1, over its last half second; nothing
/// while it is shorter or silent.
std::optional<double> shareOfTone(const std::vector<float>& signal, double frequency);

}  // namespace vesk::capture::pipewire::test
