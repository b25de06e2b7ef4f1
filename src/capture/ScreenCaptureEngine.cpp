#include "capture/ScreenCaptureEngine.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <utility>

#include "capture/ScreenTarget.h"
#include "media/PictureConverter.h"
#include "package/Log.h"

namespace vesk::capture {
namespace {

using media::HostTime;
using namespace std::chrono_literals;

constexpr int soundChannels = 2;
constexpr std::int64_t soundBitRate = 160'000;
/// How long the last picture stands when nothing tells more.
constexpr HostTime shortestTail = 1'000'000'000ns / 60;
/// One in so many dropped frames is logged.
constexpr std::int64_t droppedPerLogLine = 30;

spdlog::logger& captureLog() {
  return package::log(package::LogCategory::capture);
}

std::optional<double> seconds(const std::optional<HostTime>& time) {
  return time ? std::optional{media::secondsOf(*time)} : std::nullopt;
}

bool differs(const package::Rect& a, const package::Rect& b) {
  constexpr double tolerance = 0.5;
  return std::abs(a.x - b.x) > tolerance || std::abs(a.y - b.y) > tolerance ||
         std::abs(a.width - b.width) > tolerance || std::abs(a.height - b.height) > tolerance;
}

std::string reasonOf(const ScreenStreamEnd& end) {
  if (end.cause == ScreenStreamEnd::Cause::resources) {
    return "系统中断了屏幕捕获（错误 -3821）。常见原因：磁盘空间不足、系统负载过高。已保存中断前"
           "的内容。";
  }
  return "屏幕捕获意外停止：" + end.message;
}

}  // namespace

ScreenCaptureEngine::ScreenCaptureEngine(Seams seams) : seams_{std::move(seams)} {}

ScreenCaptureEngine::~ScreenCaptureEngine() {
  stop();
}

std::expected<void, CaptureError> ScreenCaptureEngine::start(const Config& config) {
  const auto request = screenTarget(config.scope, config.fps, seams_.geometry);
  if (!request) return std::unexpected(request.error());
  size_ = request->size;
  scaleFactor_ = request->scaleFactor;
  if (size_.width == 0 || size_.height == 0) {
    return std::unexpected(CaptureError::writerSetupFailed("录制范围太小"));
  }
  pool_.emplace(size_.width, size_.height);
  if (auto opened = openMovie(config); !opened) return opened;
  return startStreams(config, *request);
}

std::expected<void, CaptureError> ScreenCaptureEngine::openMovie(const Config& config) {
  const auto bitRate =
      media::captureBitRate(config.bppCoefficient, size_.width, size_.height, config.fps);
  const media::PictureTrackSettings pictures{
      .width = size_.width, .height = size_.height, .fps = config.fps, .bitRate = bitRate};
  media::CaptureSettings settings{
      .pictures = pictures, .encoder = seams_.chooseEncoder(pictures), .sound = {}};
  if (config.capturesSystemAudio) {
    settings.sound = {.channels = soundChannels, .bitRate = soundBitRate};
  }
  auto movie = seams_.openMovie(config.outputURL, settings);
  if (!movie) return std::unexpected(CaptureError::writerSetupFailed(movie.error().message));

  const std::scoped_lock lock{mutex_};
  movie_ = *std::move(movie);
  hasSound_ = config.capturesSystemAudio;
  systemAudioSamples_ = 0;
  sessionStarted_ = false;
  firstPTS_.reset();
  lastPTS_.reset();
  dropped_ = 0;
  interrupted_ = false;
  interruptReason_.reset();
  captureLog().info("writer ready bitrate={} bpp={} encoder={}", bitRate, config.bppCoefficient,
                    settings.encoder.name);
  return {};
}

std::expected<void, CaptureError> ScreenCaptureEngine::startStreams(const Config& config,
                                                                    const ScreenRequest& request) {
  if (config.capturesSystemAudio) listenToSystemSound();
  auto stream = seams_.screen.stream(
      request, [this](const ScreenFrame& frame) { receive(frame); },
      [this](const ScreenStreamEnd& end) { receiveEnd(end); });
  if (!stream) return std::unexpected(CaptureError::streamFailed(stream.error().message));
  screenStream_ = *std::move(stream);
  captureLog().info("capture started {}x{}@{} cursor=separated", size_.width, size_.height,
                    config.fps);
  return {};
}

// A machine that plays nothing makes a silent movie, which is no reason to refuse the take.
void ScreenCaptureEngine::listenToSystemSound() {
  auto stream = seams_.systemSound.listen(
      [this](const media::SoundBlock& sound) { receive(sound); },
      [this](const BackendError& error) { receiveSoundEnd(error.message); });
  if (stream) {
    soundStream_ = *std::move(stream);
  } else {
    captureLog().error("system sound failed: {}", stream.error().message);
  }
}

void ScreenCaptureEngine::receive(const ScreenFrame& frame) {
  TakeMovie::Picture picture;
  if (frame.status == ScreenFrame::Status::complete) {
    auto converted = pool_->acquire();
    media::convertToI420(frame.pixels, *converted);
    picture = std::move(converted);
  }
  std::string interruption;
  bool isFirst = false;
  {
    const std::scoped_lock lock{mutex_};
    if (frame.contentRect) track(*frame.contentRect);
    if (!picture) {
      if (!sessionStarted_) return;
      lastAnyPTS_ = frame.stamp;
      ++idleFrames_;
      if (movie_) movie_->stillAt(frame.stamp);
      return;
    }
    if (isWritable(interruption)) {
      isFirst = !std::exchange(sessionStarted_, true);
      if (isFirst) firstPTS_ = frame.stamp;
      write(std::move(picture), frame.stamp);
    }
  }
  if (isFirst) {
    captureLog().info("first frame pts={:f}", media::secondsOf(frame.stamp));
    if (onFirstFrame) onFirstFrame(media::secondsOf(frame.stamp));
  }
  if (!interruption.empty() && onInterrupt) onInterrupt(interruption);
}

void ScreenCaptureEngine::write(TakeMovie::Picture picture, HostTime stamp) {
  if (!movie_->offer(std::move(picture), stamp)) {
    ++dropped_;
    if (dropped_ % droppedPerLogLine == 1) {
      captureLog().error("dropped {} frames — writer 跟不上", dropped_);
    }
    return;
  }
  lastPTS_ = lastCompletePTS_ = lastAnyPTS_ = stamp;
  ++completeFrames_;
}

void ScreenCaptureEngine::receive(const media::SoundBlock& sound) {
  std::string interruption;
  {
    const std::scoped_lock lock{mutex_};
    if (!sessionStarted_ || !hasSound_) return;
    if (isWritable(interruption) && movie_->offer(sound)) {
      systemAudioSamples_ += static_cast<std::int64_t>(sound.samples.size()) / soundChannels;
    }
  }
  if (!interruption.empty() && onInterrupt) onInterrupt(interruption);
}

/// @param interruption what is to be told when this is the first to find that writing has failed.
bool ScreenCaptureEngine::isWritable(std::string& interruption) {
  if (!movie_) return false;
  const auto failure = movie_->failure();
  if (!failure) return true;
  if (!std::exchange(interrupted_, true)) {
    interruptReason_ = "录制中断：" + (failure->empty() ? "写入器异常终止" : *failure);
    interruption = *interruptReason_;
    captureLog().error("writer failed: {}", *failure);
  }
  return false;
}

void ScreenCaptureEngine::track(const package::Rect& contentRect) {
  if (!firstContentRect_) firstContentRect_ = contentRect;
  if (lastContentRect_ && differs(*lastContentRect_, contentRect)) ++contentRectChanges_;
  lastContentRect_ = contentRect;
}

void ScreenCaptureEngine::receiveEnd(const ScreenStreamEnd& end) {
  captureLog().error("stream stopped: {}", end.message);
  interrupt(reasonOf(end));
}

void ScreenCaptureEngine::receiveSoundEnd(const std::string& cause) {
  captureLog().error("system sound stopped: {}", cause);
  interrupt("系统声音意外停止：" + cause);
}

void ScreenCaptureEngine::interrupt(const std::string& reason) {
  {
    const std::scoped_lock lock{mutex_};
    interrupted_ = true;
    interruptReason_ = reason;
  }
  if (onInterrupt) onInterrupt(reason);
}

ScreenCaptureEngine::Report ScreenCaptureEngine::stop() {
  screenStream_.reset();
  soundStream_.reset();
  const std::scoped_lock lock{mutex_};
  if (movie_) {
    if (!movie_->failure()) appendStaticTail();
    if (const auto finished = movie_->finish(); !finished && !interrupted_) {
      interrupted_ = true;
      interruptReason_ = "录制文件写入未完成：" + finished.error();
      captureLog().error("finishWriting 未完成：{}", finished.error());
    }
    movie_.reset();
    captureLog().info("capture stopped frames={} idle={} dropped={} sound samples={}",
                      completeFrames_, idleFrames_, dropped_, systemAudioSamples_);
  }
  return report();
}

// A screen that stands still makes no pictures, and the movie would end with the last of them.
void ScreenCaptureEngine::appendStaticTail() {
  if (!firstPTS_ || !lastPTS_ || *lastPTS_ <= *firstPTS_) return;
  const bool stoodStill = lastAnyPTS_ && *lastAnyPTS_ > *lastPTS_;
  const HostTime tail = stoodStill ? *lastAnyPTS_ : *lastPTS_ + shortestTail;
  movie_->repeatLatest(tail);
  lastPTS_ = tail;
}

ScreenCaptureEngine::Report ScreenCaptureEngine::report() const {
  return {.firstFramePTS = seconds(firstPTS_),
          .droppedFrames = dropped_,
          .interrupted = interrupted_,
          .interruptReason = interruptReason_,
          .completeFrames = completeFrames_,
          .idleFrames = idleFrames_,
          .lastCompletePTS = seconds(lastCompletePTS_),
          .lastAnyPTS = seconds(lastAnyPTS_),
          .firstContentRect = firstContentRect_,
          .lastContentRect = lastContentRect_,
          .contentRectChanges = contentRectChanges_};
}

}  // namespace vesk::capture
