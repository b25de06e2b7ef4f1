#include "editor/SoundTrackFeed.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cassert>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "editor/SoundRing.h"
#include "media/PeakLimiter.h"
#include "media/SoundGain.h"
#include "media/SoundReader.h"
#include "package/Log.h"

namespace vesk::editor {
namespace {

using media::soundRate;
using media::StereoSample;

constexpr std::size_t ringLength = soundRate;  ///< how far decoding runs ahead
constexpr std::size_t blockLength = 2048;      ///< decoded at one go
constexpr std::size_t pieceLength = 1024;      ///< mixed at one go
constexpr std::size_t enoughToPlay = soundRate / 10;
constexpr std::chrono::milliseconds longestWait{200};
/// So that any change of a gain is done within 10 ms.
constexpr auto gainStep = static_cast<float>(media::strongestGain / (soundRate / 100.0));

std::int64_t samples(double seconds) {
  constexpr double most = 1e15;
  return seconds > 0 ? std::llround(std::min(seconds * soundRate, most)) : 0;
}

/// A clip as the decoder goes through it.
class Track {
 public:
  explicit Track(const media::SoundClip& clip)
      : file_{clip.file},
        start_{samples(clip.start)},
        end_{std::max(start_, samples(clip.start + clip.length))} {}

  void open() {
    auto reader = media::SoundReader::open(file_);
    if (reader) {
      reader_.emplace(*std::move(reader));
    } else {
      package::log(package::LogCategory::preview).error("sound: {}", reader.error().message);
    }
  }

  [[nodiscard]] std::int64_t end() const { return end_; }

  /// What is heard of the clip from `position` of the recording on.
  void read(std::int64_t position, std::span<StereoSample> out) {
    std::ranges::fill(out, StereoSample{});
    const std::int64_t from = std::max(start_, position);
    const std::int64_t to = std::min(end_, position + std::ssize(out));
    if (!reader_ || from >= to) return;
    if (reader_->position() != from - start_) reader_->seek(from - start_);
    reader_->read(out.subspan(static_cast<std::size_t>(from - position),
                              static_cast<std::size_t>(to - from)));
  }

 private:
  std::filesystem::path file_;
  std::int64_t start_;
  std::int64_t end_;
  std::optional<media::SoundReader> reader_;
};

/// A gain that slides to where it was set.
class Gain {
 public:
  void set(double value) {
    target_.store(static_cast<float>(media::usedGain(value)), std::memory_order_relaxed);
  }
  void settle() { current_ = target_.load(std::memory_order_relaxed); }
  float next() {
    current_ += std::clamp(target_.load(std::memory_order_relaxed) - current_, -gainStep, gainStep);
    return current_;
  }

 private:
  std::atomic<float> target_ = 1;
  float current_ = 1;
};

}  // namespace

class SoundTrackFeed::Worker {
 public:
  explicit Worker(const std::vector<media::SoundClip>& clips)
      : tracks_{clips.begin(), clips.end()}, gains_(clips.size()), ring_{clips.size(), ringLength} {
    for (const Track& track : tracks_) end_ = std::max(end_, track.end());
    limited_.reserve(pieceLength);
    thread_ = std::jthread{[this](const std::stop_token& stop) { run(stop); }};
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() {
    thread_.request_stop();
    wake();
  }

  void setGain(std::size_t clip, double gain) {
    assert(clip < gains_.size());
    gains_[clip].set(gain);
  }
  void seek(double time);
  void waitForSound();
  void read(std::span<StereoSample> out);

 private:
  void run(const std::stop_token& stop);
  bool decode();
  void wake();
  [[nodiscard]] bool canPlay() const;
  void readPiece(std::span<StereoSample> out, std::int64_t decodedEnd);
  std::span<const StereoSample> mix(std::size_t count, std::int64_t decodedEnd);

  // The decoder's.
  std::vector<Track> tracks_;

  // The player's.
  std::vector<Gain> gains_;
  bool isAtRest_ = true;  ///< nothing has been read since the last move
  media::PeakLimiter limiter_;
  std::array<StereoSample, pieceLength> mixed_{};
  std::vector<StereoSample> limited_;

  // Between them.
  std::int64_t end_ = 0;  ///< of the last clip; behind it nothing is decoded
  SoundRing ring_;
  std::atomic<std::uint32_t> wakes_ = 0;  ///< changes when there may be something to decode
  std::mutex progressMutex_;              ///< for the condition alone
  std::condition_variable progress_;

  std::jthread thread_;
};

void SoundTrackFeed::Worker::run(const std::stop_token& stop) {
  for (Track& track : tracks_) track.open();
  while (!stop.stop_requested()) {
    const std::uint32_t seen = wakes_.load(std::memory_order_acquire);
    if (decode()) {
      {
        const std::scoped_lock lock{progressMutex_};
      }
      progress_.notify_all();
    } else {
      wakes_.wait(seen, std::memory_order_acquire);
    }
  }
}

/// Decodes the next block; false when there is nothing to do.
bool SoundTrackFeed::Worker::decode() {
  const bool isNewTurn = ring_.follow();
  const std::int64_t position = ring_.writePosition();
  const std::int64_t rest = end_ - position;
  if (rest <= 0 || ring_.room() < blockLength) return isNewTurn;
  const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(rest, blockLength));
  std::size_t count = wanted;
  for (std::size_t track = 0; track < tracks_.size(); ++track) {
    const std::span<StereoSample> place = ring_.place(track, wanted);
    count = place.size();
    tracks_[track].read(position, place);
  }
  ring_.publish(count);
  return true;
}

void SoundTrackFeed::Worker::wake() {
  wakes_.fetch_add(1, std::memory_order_release);
  wakes_.notify_one();
}

void SoundTrackFeed::Worker::seek(double time) {
  isAtRest_ = true;
  limiter_.reset();
  ring_.jump(samples(time));
  wake();
}

void SoundTrackFeed::Worker::waitForSound() {
  std::unique_lock lock{progressMutex_};
  progress_.wait_for(lock, longestWait, [this] { return canPlay(); });
}

bool SoundTrackFeed::Worker::canPlay() const {
  const std::int64_t rest = std::max(end_ - ring_.readPosition(), std::int64_t{0});
  return rest == 0 ||
         static_cast<std::int64_t>(ring_.available()) >= std::min<std::int64_t>(rest, enoughToPlay);
}

void SoundTrackFeed::Worker::read(std::span<StereoSample> out) {
  if (std::exchange(isAtRest_, false)) {
    for (Gain& gain : gains_) gain.settle();
  }
  const std::int64_t decodedEnd =
      ring_.readPosition() + static_cast<std::int64_t>(ring_.available());
  while (!out.empty()) {
    const auto piece = out.first(std::min(out.size(), pieceLength));
    readPiece(piece, decodedEnd);
    out = out.subspan(piece.size());
  }
  wake();
}

void SoundTrackFeed::Worker::readPiece(std::span<StereoSample> out, std::int64_t decodedEnd) {
  limited_.clear();
  while (limited_.size() < out.size()) {  // the limiter keeps some back at first
    limiter_.push(mix(out.size() - limited_.size(), decodedEnd), limited_);
  }
  std::ranges::copy(limited_, out.begin());
}

std::span<const StereoSample> SoundTrackFeed::Worker::mix(std::size_t count,
                                                          std::int64_t decodedEnd) {
  std::ranges::fill(std::span{mixed_}.first(count), StereoSample{});
  const auto decoded = static_cast<std::size_t>(std::clamp(
      decodedEnd - ring_.readPosition(), std::int64_t{0}, static_cast<std::int64_t>(count)));
  for (std::size_t track = 0; track < gains_.size(); ++track) {
    for (std::size_t index = 0; index < decoded; ++index) {
      const StereoSample& sample = ring_.at(track, index);
      const float gain = gains_[track].next();
      mixed_[index].left += gain * sample.left;
      mixed_[index].right += gain * sample.right;
    }
  }
  ring_.advance(count);
  return std::span{mixed_}.first(count);
}

SoundTrackFeed::SoundTrackFeed(const std::vector<media::SoundClip>& clips)
    : worker_{std::make_unique<Worker>(clips)} {}

SoundTrackFeed::~SoundTrackFeed() = default;

void SoundTrackFeed::setGain(std::size_t clip, double gain) {
  worker_->setGain(clip, gain);
}

void SoundTrackFeed::seek(double time) {
  worker_->seek(time);
}

void SoundTrackFeed::waitForSound() {
  worker_->waitForSound();
}

void SoundTrackFeed::read(std::span<StereoSample> out) {
  worker_->read(out);
}

}  // namespace vesk::editor
