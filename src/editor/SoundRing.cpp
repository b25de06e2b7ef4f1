#include "editor/SoundRing.h"

#include <algorithm>

namespace vesk::editor {

SoundRing::SoundRing(std::size_t tracks, std::size_t capacity)
    : capacity_{capacity}, tracks_(tracks, std::vector<media::StereoSample>(capacity)) {}

void SoundRing::jump(std::int64_t position) {
  read_.store(position, std::memory_order_release);
  turn_.fetch_add(1, std::memory_order_release);
}

bool SoundRing::follow() {
  const std::uint32_t turn = turn_.load(std::memory_order_acquire);
  if (turn == followed_.load(std::memory_order_relaxed)) return false;
  written_.store(read_.load(std::memory_order_acquire), std::memory_order_relaxed);
  followed_.store(turn, std::memory_order_release);
  return true;
}

std::int64_t SoundRing::writePosition() {
  const std::int64_t reached = read_.load(std::memory_order_acquire);
  if (written_.load(std::memory_order_relaxed) < reached) {
    written_.store(reached, std::memory_order_release);
  }
  return written_.load(std::memory_order_relaxed);
}

std::size_t SoundRing::room() const {
  const std::int64_t ahead =
      written_.load(std::memory_order_relaxed) - read_.load(std::memory_order_acquire);
  const auto capacity = static_cast<std::int64_t>(capacity_);
  return static_cast<std::size_t>(std::clamp(capacity - ahead, std::int64_t{0}, capacity));
}

std::span<media::StereoSample> SoundRing::place(std::size_t track, std::size_t count) {
  const std::size_t from = slot(written_.load(std::memory_order_relaxed));
  return std::span{tracks_[track]}.subspan(from, std::min(count, capacity_ - from));
}

void SoundRing::publish(std::size_t count) {
  written_.store(written_.load(std::memory_order_relaxed) + static_cast<std::int64_t>(count),
                 std::memory_order_release);
}

std::size_t SoundRing::available() const {
  if (followed_.load(std::memory_order_acquire) != turn_.load(std::memory_order_relaxed)) return 0;
  const std::int64_t ahead = written_.load(std::memory_order_acquire) - readPosition();
  return static_cast<std::size_t>(std::max(ahead, std::int64_t{0}));
}

const media::StereoSample& SoundRing::at(std::size_t track, std::size_t ahead) const {
  return tracks_[track][slot(readPosition() + static_cast<std::int64_t>(ahead))];
}

void SoundRing::advance(std::size_t count) {
  read_.store(readPosition() + static_cast<std::int64_t>(count), std::memory_order_release);
}

std::size_t SoundRing::slot(std::int64_t position) const {
  return static_cast<std::size_t>(position) % capacity_;
}

}  // namespace vesk::editor
