#include "editor/SoundTrackFeed.h"

#include <algorithm>
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
#include "media/SoundReader.h"
#include "package/Log.h"

namespace vesk::editor {
namespace {

using media::soundRate;
using media::StereoSample;

constexpr std::size_t ringLength = soundRate;  ///< how far decoding runs ahead
constexpr std::size_t blockLength = 2048;      ///< decoded at one go
constexpr std::size_t enoughToPlay = soundRate / 10;
constexpr std::chrono::milliseconds longestWait{200};
constexpr float mostGain = 2;
/// So that any change of a gain is done within 10 ms.
constexpr float gainStep = mostGain / (soundRate / 100.0F);

std::int64_t samples(double seconds) {
  constexpr double most = 1e15;
  return seconds > 0 ? std::llround(std::min(seconds * soundRate, most)) : 0;
}

float gainFrom(double value) {
  return std::isnan(value) ? 1 : static_cast<float>(std::clamp(value, 0.0, double{mostGain}));
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
  void set(double value) { target_.store(gainFrom(value), std::memory_order_relaxed); }
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
  void read(std::span<StereoSample> out);

 private:
  void run(const std::stop_token& stop);
  bool decode();
  void wake();
  [[nodiscard]] bool canPlay() const;
  void mix(std::size_t count);

  // The decoder's.
  std::vector<Track> tracks_;

  // The player's.
  std::vector<Gain> gains_;
  media::PeakLimiter limiter_;
  std::vector<StereoSample> mixed_;
  std::vector<StereoSample> limited_;  ///< what waits to be read

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
  for (Gain& gain : gains_) gain.settle();
  limiter_ = {};
  limited_.clear();
  ring_.jump(samples(time));
  wake();
  std::unique_lock lock{progressMutex_};
  progress_.wait_for(lock, longestWait, [this] { return canPlay(); });
}

bool SoundTrackFeed::Worker::canPlay() const {
  const std::int64_t rest = std::max(end_ - ring_.readPosition(), std::int64_t{0});
  return rest == 0 ||
         static_cast<std::int64_t>(ring_.available()) >= std::min<std::int64_t>(rest, enoughToPlay);
}

void SoundTrackFeed::Worker::read(std::span<StereoSample> out) {
  while (limited_.size() < out.size()) {  // the limiter keeps some back at first
    mix(out.size() - limited_.size());
    limiter_.push(mixed_, limited_);
  }
  const auto end = limited_.begin() + std::ssize(out);
  std::copy(limited_.begin(), end, out.begin());
  limited_.erase(limited_.begin(), end);
  wake();
}

void SoundTrackFeed::Worker::mix(std::size_t count) {
  mixed_.assign(count, StereoSample{});
  const std::size_t decoded = std::min(count, ring_.available());
  for (std::size_t track = 0; track < gains_.size(); ++track) {
    for (std::size_t index = 0; index < decoded; ++index) {
      const StereoSample& sample = ring_.at(track, index);
      const float gain = gains_[track].next();
      mixed_[index].left += gain * sample.left;
      mixed_[index].right += gain * sample.right;
    }
  }
  ring_.advance(count);
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

void SoundTrackFeed::read(std::span<StereoSample> out) {
  worker_->read(out);
}

}  // namespace vesk::editor
