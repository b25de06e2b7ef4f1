#include "capture/MicrophoneRecorder.h"

#include <fmt/format.h>

#include <utility>

#include "media/HostTime.h"
#include "package/Log.h"

namespace vesk::capture {
namespace {

using MicError = MicrophoneRecorder::MicError;
using MicStarted = std::expected<void, MicError>;

constexpr int channels = 1;
constexpr std::int64_t voiceBitRate = 128'000;

spdlog::logger& micLog() {
  return package::log(package::LogCategory::mic);
}

MicStarted failed(MicError::Kind kind, std::string message) {
  return std::unexpected(MicError{.kind = kind, .message = std::move(message)});
}

}  // namespace

MicrophoneRecorder::MicrophoneRecorder(SoundSource& microphone, OpenTakeMovie openMovie)
    : microphone_{microphone}, openMovie_{std::move(openMovie)} {}

MicrophoneRecorder::~MicrophoneRecorder() {
  stop();
}

MicStarted MicrophoneRecorder::start(const std::filesystem::path& url) {
  const auto device = microphone_.deviceName();
  if (!device) return failed(MicError::Kind::noDevice, "找不到可用的麦克风");
  auto movie = openMovie_(url, {.kind = media::GrowingFile::sound,
                                .pictures = {},
                                .sound = {{.channels = channels, .bitRate = voiceBitRate}}});
  if (!movie) {
    return failed(MicError::Kind::writerSetupFailed,
                  "麦克风写入器创建失败：" + movie.error().message);
  }
  {
    const std::scoped_lock lock{mutex_};
    movie_ = *std::move(movie);
    firstSamplePTS_.reset();
    sampleCount_ = 0;
  }
  auto stream = microphone_.listen([this](const media::SoundBlock& sound) { receive(sound); },
                                   [this](const BackendError& error) { fail(error.message); });
  if (!stream) {
    stop();
    return failed(MicError::Kind::sessionSetupFailed,
                  "麦克风会话创建失败：" + stream.error().message);
  }
  stream_ = *std::move(stream);
  micLog().info("mic started device={}", *device);
  return {};
}

void MicrophoneRecorder::receive(const media::SoundBlock& sound) {
  std::optional<std::string> broken;
  {
    const std::scoped_lock lock{mutex_};
    if (!movie_) return;
    if (!firstSamplePTS_) {
      firstSamplePTS_ = media::secondsOf(sound.stamp);
      micLog().info("mic first sample pts={:f}", *firstSamplePTS_);
    }
    broken = movie_->failure();
    if (!broken && movie_->offer(sound)) {
      sampleCount_ += static_cast<std::int64_t>(sound.samples.size());
    }
  }
  if (broken) fail(broken->empty() ? "麦克风写入器异常终止" : *std::move(broken));
}

void MicrophoneRecorder::fail(std::string reason) {
  const std::scoped_lock lock{mutex_};
  if (failure_) return;
  micLog().error("mic writer failed: {}", reason);
  failure_ = std::move(reason);
}

void MicrophoneRecorder::stop() {
  stream_.reset();
  const std::scoped_lock lock{mutex_};
  if (!movie_) return;
  if (const auto finished = movie_->finish(); !finished) {
    micLog().error("mic file incomplete: {}", finished.error());
  }
  movie_.reset();
  micLog().info("mic stopped samples={} firstPTS={}", sampleCount_,
                firstSamplePTS_ ? fmt::format("{:f}", *firstSamplePTS_) : "nil");
}

std::optional<double> MicrophoneRecorder::firstSamplePTS() const {
  const std::scoped_lock lock{mutex_};
  return firstSamplePTS_;
}

std::optional<std::string> MicrophoneRecorder::failure() const {
  const std::scoped_lock lock{mutex_};
  return failure_;
}

}  // namespace vesk::capture
