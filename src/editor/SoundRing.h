#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "media/StereoSample.h"

namespace vesk::editor {

/// Sound of several tracks on its way from one thread that decodes to one that plays, neither of
/// which waits for the other. Positions count samples. A turn is what is played between two jumps:
/// what the decoder still writes of the turn before, the player does not get to see.
class SoundRing {
 public:
  SoundRing(std::size_t tracks, std::size_t capacity);

  /// Begins a new turn from `position` on. While nothing is taken.
  void jump(std::int64_t position);

  // For the decoder.

  /// Takes up the newest turn; whether it was new.
  bool follow();
  /// Where to go on: behind what is written, or where the player has got to if that is further.
  std::int64_t writePosition();
  [[nodiscard]] std::size_t room() const;
  /// A place for samples of a track, from the write position on; as much of `count` as lies in one
  /// piece, the same for each track. No more than there is room for.
  [[nodiscard]] std::span<media::StereoSample> place(std::size_t track, std::size_t count);
  /// Gives what was written to the player.
  void publish(std::size_t count);

  // For the player.

  /// How much of the turn is written from the read position on.
  [[nodiscard]] std::size_t available() const;
  /// The sample of a track so far behind the read position. Less than what is available.
  [[nodiscard]] const media::StereoSample& at(std::size_t track, std::size_t ahead) const;
  /// Moves the read position on, also beyond what is written.
  void advance(std::size_t count);
  [[nodiscard]] std::int64_t readPosition() const { return read_.load(std::memory_order_relaxed); }

 private:
  [[nodiscard]] std::size_t slot(std::int64_t position) const;

  std::size_t capacity_;
  std::vector<std::vector<media::StereoSample>> tracks_;
  std::atomic<std::uint32_t> turn_ = 0;      ///< the one that is played
  std::atomic<std::uint32_t> followed_ = 0;  ///< the one that is written
  std::atomic<std::int64_t> read_ = 0;
  std::atomic<std::int64_t> written_ = 0;
};

}  // namespace vesk::editor
