#pragma once

#include <cstdint>
#include <optional>

namespace vesk::capture::pipewire {

/// Counts a stream's samples by the ticks of the graph it runs in, which go on where the stream
/// loses samples. A graph whose ticks are of another rate than the samples tells of losses alone,
/// since a resampler's blocks differ by a sample or two.
class TickCount {
 public:
  struct Block {
    std::int64_t ticks = 0;     ///< of the graph, at the block
    std::int64_t tickRate = 0;  ///< of them a second; positive
    std::int64_t samples = 0;   ///< of each channel
  };

  /// The number of samples before the first one of the next block.
  std::int64_t positionOf(const Block& block);

 private:
  std::optional<Block> latest_;
  std::int64_t position_ = 0;
};

}  // namespace vesk::capture::pipewire
