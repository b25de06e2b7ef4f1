#include "capture/CameraRecorder.h"

#include <fmt/format.h>

#include <chrono>
#include <utility>

#include "capture/LitFrame.h"
#include "package/Log.h"

namespace vesk::capture {
namespace {

using CameraError = CameraRecorder::CameraError;
using CameraStarted = std::expected<void, CameraError>;

constexpr PixelSize movieSize{.width = 1280, .height = 720};
constexpr int cameraFramesPerSecond = 30;
constexpr std::int64_t cameraBitRate = 1'658'880;

spdlog::logger& cameraLog() {
  return package::log(package::LogCategory::camera);
}

CameraError errorOf(const CameraRefusal& refusal) {
  if (refusal.cause == CameraRefusal::Cause::busy) {
    return {.kind = CameraError::Kind::cannotAddInput,
            .message = "摄像头无法加入捕获会话（可能被其它 App 占用）"};
  }
  return {.kind = CameraError::Kind::deviceFailed, .message = refusal.message};
}

media::CaptureSettings movieSettings() {
  return {.kind = media::GrowingFile::quickTime,
          .pictures = {{.width = movieSize.width,
                        .height = movieSize.height,
                        .fps = cameraFramesPerSecond,
                        .bitRate = cameraBitRate}},
          .encoder = media::plainestCaptureEncoder(),
          .sound = {}};
}

}  // namespace

CameraRecorder::CameraRecorder(CameraSource& camera, OpenTakeMovie openMovie)
    : camera_{camera}, openMovie_{std::move(openMovie)}, pool_{movieSize.width, movieSize.height} {}

CameraRecorder::~CameraRecorder() {
  stop();
}

CameraStarted CameraRecorder::start(const std::optional<CameraDevice>& device,
                                    const std::filesystem::path& url) {
  auto chosen = device;
  if (!chosen) {
    auto all = camera_.devices();
    if (all.empty()) {
      return std::unexpected(
          CameraError{.kind = CameraError::Kind::noDevice, .message = "找不到可用的摄像头"});
    }
    chosen = std::move(all.front());
  }
  {
    const std::scoped_lock lock{mutex_};
    url_ = url;
    started_ = false;
    firstFramePTS_.reset();
    frameCount_ = 0;
  }
  auto stream = camera_.listen(
      *chosen, movieSize, [this](const CameraFrame& frame) { receive(frame); },
      [this](const BackendError& error) { receiveEnd(error.message); });
  if (!stream) {
    stop();
    return std::unexpected(errorOf(stream.error()));
  }
  stream_ = *std::move(stream);
  cameraLog().info("camera started device={}", chosen->name);
  return {};
}

void CameraRecorder::receive(const CameraFrame& frame) {
  const std::scoped_lock lock{mutex_};
  if (!url_ || (!started_ && !begin(frame)) || !isWritable()) return;
  if (!firstLitFramePTS_ && isLit(frame.pixels)) firstLitFramePTS_ = media::secondsOf(frame.stamp);
  write(frame);
}

// The file begins with the first picture, so that a camera that gives none leaves no empty one.
bool CameraRecorder::begin(const CameraFrame& frame) {
  auto movie = openMovie_(*url_, movieSettings());
  if (!movie) {
    const auto error = CameraError{.kind = CameraError::Kind::writerSetupFailed,
                                   .message = "无法创建摄像头写入器：" + movie.error().message};
    url_.reset();
    fail(error.message);
    return false;
  }
  movie_ = *std::move(movie);
  started_ = true;
  firstFramePTS_ = media::secondsOf(frame.stamp);
  pixelSize_ = {.width = frame.pixels.width, .height = frame.pixels.height};
  return true;
}

bool CameraRecorder::isWritable() {
  const auto broken = movie_->failure();
  if (broken) fail(broken->empty() ? "摄像头写入器异常终止" : *broken);
  return !broken;
}

void CameraRecorder::write(const CameraFrame& frame) {
  auto picture = pool_.acquire();
  if (!fitter_.convert(frame.pixels, *picture)) return;
  if (movie_->offer(std::move(picture), frame.stamp)) ++frameCount_;
}

void CameraRecorder::receiveEnd(const std::string& cause) {
  const std::scoped_lock lock{mutex_};
  fail(cause);
}

void CameraRecorder::fail(std::string reason) {
  if (failure_) return;
  cameraLog().error("camera writer failed: {}", reason);
  failure_ = std::move(reason);
}

void CameraRecorder::stop() {
  stream_.reset();
  const std::scoped_lock lock{mutex_};
  if (!url_ && !movie_) return;
  url_.reset();
  if (movie_) {
    if (const auto finished = movie_->finish(); !finished) {
      cameraLog().error("camera file incomplete: {}", finished.error());
    }
    movie_.reset();
  }
  cameraLog().info("camera stopped frames={} {}x{} firstPTS={}", frameCount_, pixelSize_.width,
                   pixelSize_.height,
                   firstFramePTS_ ? fmt::format("{:f}", *firstFramePTS_) : "nil");
}

std::optional<double> CameraRecorder::firstFramePTS() const {
  const std::scoped_lock lock{mutex_};
  return firstFramePTS_;
}

std::optional<double> CameraRecorder::firstLitFramePTS() const {
  const std::scoped_lock lock{mutex_};
  return firstLitFramePTS_;
}

std::optional<std::string> CameraRecorder::failure() const {
  const std::scoped_lock lock{mutex_};
  return failure_;
}

}  // namespace vesk::capture
