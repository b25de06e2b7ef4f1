#include "media/CaptureMovie.h"

#include <pthread.h>

#include <cassert>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "media/StereoSample.h"

namespace vesk::media {
namespace {

struct PictureJob {
  CaptureMovie::Picture picture;
  HostTime stamp{};
};

struct SoundJob {
  SoundBlock block;  ///< its samples are `samples`
  std::vector<float> samples;
};

struct StillJob {
  HostTime now{};
};

struct RepeatJob {
  HostTime stamp{};
};

using Job = std::variant<PictureJob, SoundJob, StillJob, RepeatJob>;

template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};

}  // namespace

class CaptureMovie::Writing {
 public:
  Writing(const CaptureSettings& settings, OnFailure onFailure)
      : hasPictures_(settings.pictures.has_value()),
        channels_(settings.sound ? static_cast<std::size_t>(settings.sound->channels) : 1),
        onFailure_(std::move(onFailure)) {}
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;
  ~Writing() { [[maybe_unused]] const Outcome outcome = finish(); }

  Outcome start(const std::filesystem::path& file, const CaptureSettings& settings);
  bool offer(Picture picture, HostTime stamp);
  bool offer(const SoundBlock& sound);
  void stillAt(HostTime now);
  void repeatLatest(HostTime stamp);
  [[nodiscard]] Status status() const;
  Outcome finish();

 private:
  void run(CaptureWriter writer);
  Outcome writeAll(CaptureWriter& writer);
  std::optional<Job> next();
  [[nodiscard]] bool isOpen() const { return !isEnding_ && status_.state != State::failed; }
  void add(Job job);
  void fail(const MediaError& error);

  const bool hasPictures_;
  const std::size_t channels_;
  OnFailure onFailure_;

  mutable std::mutex mutex_;
  std::condition_variable jobOrEnd_;
  std::deque<Job> jobs_;
  std::size_t waitingPictures_ = 0;
  std::size_t waitingSamples_ = 0;
  bool isEnding_ = false;
  Status status_;

  std::mutex finishing_;
  Outcome outcome_;  ///< of the whole, once the thread is through
  std::thread thread_;
};

/// The encoders are opened on the thread as well, so that the threads which they start bear its
/// name.
CaptureMovie::Outcome CaptureMovie::Writing::start(const std::filesystem::path& file,
                                                   const CaptureSettings& settings) {
  std::promise<Outcome> opening;
  auto opened = opening.get_future();
  thread_ = std::thread([this, opening = std::move(opening), file, settings]() mutable {
    ::pthread_setname_np(::pthread_self(), "encoder");
    auto writer = CaptureWriter::create(file, settings);
    if (!writer) {
      opening.set_value(std::unexpected(std::move(writer.error())));
      return;
    }
    opening.set_value({});
    run(*std::move(writer));
  });
  return opened.get();
}

bool CaptureMovie::Writing::offer(Picture picture, HostTime stamp) {
  assert(hasPictures_ && picture != nullptr);
  const std::scoped_lock lock(mutex_);
  if (!isOpen() || waitingPictures_ >= pictureRoom) {
    return false;
  }
  ++waitingPictures_;
  status_.state = State::writing;
  add(PictureJob{std::move(picture), stamp});
  return true;
}

bool CaptureMovie::Writing::offer(const SoundBlock& sound) {
  constexpr auto secondsOfRoom = static_cast<std::size_t>(soundRoom / std::chrono::seconds(1));
  const std::size_t room = secondsOfRoom * soundRate * channels_;
  SoundJob job{sound, {sound.samples.begin(), sound.samples.end()}};
  const std::scoped_lock lock(mutex_);
  if (!isOpen() || waitingSamples_ + job.samples.size() > room) {
    return false;
  }
  waitingSamples_ += job.samples.size();
  if (!hasPictures_) {
    status_.state = State::writing;
  }
  add(std::move(job));
  return true;
}

/// One look at a still screen after another takes no more room than one.
void CaptureMovie::Writing::stillAt(HostTime now) {
  const std::scoped_lock lock(mutex_);
  if (!isOpen()) {
    return;
  }
  if (auto* waiting = jobs_.empty() ? nullptr : std::get_if<StillJob>(&jobs_.back())) {
    waiting->now = now;
  } else {
    add(StillJob{now});
  }
}

void CaptureMovie::Writing::repeatLatest(HostTime stamp) {
  const std::scoped_lock lock(mutex_);
  if (isOpen()) {
    add(RepeatJob{stamp});
  }
}

CaptureMovie::Status CaptureMovie::Writing::status() const {
  const std::scoped_lock lock(mutex_);
  return status_;
}

CaptureMovie::Outcome CaptureMovie::Writing::finish() {
  {
    const std::scoped_lock lock(mutex_);
    isEnding_ = true;
  }
  jobOrEnd_.notify_one();
  const std::scoped_lock lock(finishing_);
  if (thread_.joinable()) {
    thread_.join();
  }
  return outcome_;
}

void CaptureMovie::Writing::add(Job job) {
  jobs_.push_back(std::move(job));
  jobOrEnd_.notify_one();
}

void CaptureMovie::Writing::run(CaptureWriter writer) {
  outcome_ = writeAll(writer);
  if (!outcome_) {
    fail(outcome_.error());
  }
}

CaptureMovie::Outcome CaptureMovie::Writing::writeAll(CaptureWriter& writer) {
  while (const auto job = next()) {
    const auto written = std::visit(
        Overloaded{
            [&](const PictureJob& each) { return writer.write(each.picture, each.stamp); },
            [&](const SoundJob& each) {
              SoundBlock block = each.block;
              block.samples = each.samples;
              return writer.write(block);
            },
            [&](const StillJob& each) { return writer.stillAt(each.now); },
            [&](const RepeatJob& each) { return writer.repeatLatest(each.stamp); },
        },
        *job);
    if (!written) {
      return written;
    }
  }
  return writer.finish();
}

/// Waits for the next job. Nothing when there will be none.
std::optional<Job> CaptureMovie::Writing::next() {
  std::unique_lock lock(mutex_);
  jobOrEnd_.wait(lock, [this] { return isEnding_ || !jobs_.empty(); });
  if (jobs_.empty()) {
    return std::nullopt;
  }
  Job job = std::move(jobs_.front());
  jobs_.pop_front();
  if (std::holds_alternative<PictureJob>(job)) {
    --waitingPictures_;
  } else if (const auto* sound = std::get_if<SoundJob>(&job)) {
    waitingSamples_ -= sound->samples.size();
  }
  return job;
}

void CaptureMovie::Writing::fail(const MediaError& error) {
  std::deque<Job> lost;
  {
    const std::scoped_lock lock(mutex_);
    status_ = {State::failed, error};
    lost = std::exchange(jobs_, {});
  }
  if (onFailure_) {
    onFailure_(error);
  }
}

std::expected<CaptureMovie, MediaError> CaptureMovie::create(const std::filesystem::path& file,
                                                             const CaptureSettings& settings,
                                                             OnFailure onFailure) {
  auto writing = std::make_unique<Writing>(settings, std::move(onFailure));
  if (auto started = writing->start(file, settings); !started) {
    return std::unexpected(std::move(started.error()));
  }
  return CaptureMovie(std::move(writing));
}

CaptureMovie::CaptureMovie(std::unique_ptr<Writing> writing) : writing_(std::move(writing)) {}
CaptureMovie::CaptureMovie(CaptureMovie&&) noexcept = default;
CaptureMovie& CaptureMovie::operator=(CaptureMovie&&) noexcept = default;
CaptureMovie::~CaptureMovie() = default;

bool CaptureMovie::offer(Picture picture, HostTime stamp) {
  return writing_->offer(std::move(picture), stamp);
}

bool CaptureMovie::offer(const SoundBlock& sound) {
  return writing_->offer(sound);
}

void CaptureMovie::stillAt(HostTime now) {
  writing_->stillAt(now);
}

void CaptureMovie::repeatLatest(HostTime stamp) {
  writing_->repeatLatest(stamp);
}

CaptureMovie::Status CaptureMovie::status() const {
  return writing_->status();
}

CaptureMovie::Outcome CaptureMovie::finish() {
  return writing_->finish();
}

}  // namespace vesk::media
