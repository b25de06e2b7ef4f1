#include "capture/x11/ScreenStream.h"

#include <pthread.h>

#include <csignal>
#include <utility>

#include "capture/x11/FrameClock.h"

namespace vesk::capture::x11 {
namespace {

/// A server that goes away in the middle of a request must not end the process.
void ignoreBrokenPipes() {
  sigset_t signals{};
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

/// Makes the first two looks complete. A movie of one picture has no length, so that a take of a
/// screen that never changes would be over as soon as it began.
class FirstLooks {
 public:
  void complete(ScreenFrame& frame) {
    ++count_;
    if (count_ == 1) first_ = frame.pixels;
    if (count_ != 2 || frame.status == ScreenFrame::Status::complete) return;
    // A look that finds nothing new leaves the pixels of the one before as they are.
    frame.status = ScreenFrame::Status::complete;
    frame.pixels = first_;
  }

 private:
  int count_ = 0;
  media::BgraView first_;
};

void lookUntil(const std::stop_token& stop, ScreenView& view, int fps,
               const ScreenSource::OnFrame& onFrame, const ScreenSource::OnEnd& onEnd) {
  ::pthread_setname_np(::pthread_self(), "vesk.screen");
  ignoreBrokenPipes();
  FrameClock clock{fps};
  FirstLooks firstLooks;
  while (clock.wait(stop)) {
    auto frame = view.look();
    if (stop.stop_requested()) return;
    if (!frame) return onEnd(frame.error());
    firstLooks.complete(*frame);
    onFrame(*frame);
  }
}

}  // namespace

ScreenStream::ScreenStream(std::unique_ptr<ScreenView> view, std::shared_ptr<const void> keptAlive,
                           int fps, ScreenSource::OnFrame onFrame, ScreenSource::OnEnd onEnd)
    : keptAlive_{std::move(keptAlive)},
      view_{std::move(view)},
      thread_{[&seen = *view_, fps, onFrame = std::move(onFrame), onEnd = std::move(onEnd)](
                  const std::stop_token& stop) { lookUntil(stop, seen, fps, onFrame, onEnd); }} {}

ScreenStream::~ScreenStream() {
  thread_.request_stop();
  view_->abandon();
}

}  // namespace vesk::capture::x11
