#include "app/CaptureStage.h"

#include <utility>

#include "capture/PointerSampler.h"
#include "capture/RecordedMovie.h"

namespace vesk::app {
namespace {

using Seconds = std::chrono::duration<double>;

}  // namespace

std::expected<std::unique_ptr<CaptureStage>, std::string> CaptureStage::open(
    const OpenBackends& openBackends, const package::RecordingLibrary& library,
    capture::ScreenCaptureEngine::ChooseEncoder chooseEncoder) {
  std::unique_ptr<CaptureStage> stage{new CaptureStage};
  auto backends = openBackends();
  if (!backends) return std::unexpected(backends.error());
  stage->backends_ = *std::move(backends);
  stage->session_.emplace(capture::RecordingSession::Surroundings{
      .backends = stage->backends_,
      .library = library,
      .clock = stage->clock_,
      .now = [] { return std::chrono::system_clock::now(); },
      .startSampler =
          [](auto sample) { return std::make_unique<capture::PointerSampler>(std::move(sample)); },
      .startTicker = [&loop = stage->loop_](
                         double seconds,
                         auto tick) { return loop.tick(Seconds{seconds}, std::move(tick)); },
      .postToMain = stage->loop_.poster(),
      .chooseEncoder = std::move(chooseEncoder),
      .openMovie = capture::openRecordedMovie});
  return stage;
}

CaptureStage::CaptureStage()
    : signals_{[this, post = loop_.poster()] { post([this] { end(); }); }} {}

void CaptureStage::end() {
  isEnding_ = true;
  if (session_) session_->interrupt("录制进程收到终止信号");
}

void CaptureStage::runFor(Seconds time) {
  loop_.runUntil([this] { return isEnding_; }, time);
}

}  // namespace vesk::app
