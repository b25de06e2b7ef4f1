#include "app/CaptureStage.h"

#include <chrono>
#include <utility>

#include "capture/PointerSampler.h"
#include "capture/RecordedMovie.h"

namespace vesk::app {

CaptureStage::CaptureStage(capture::CaptureBackends backends,
                           const package::RecordingLibrary& library,
                           capture::ScreenCaptureEngine::ChooseEncoder chooseEncoder)
    : backends_{std::move(backends)},
      session_{{.backends = backends_,
                .library = library,
                .clock = clock_,
                .now = [] { return std::chrono::system_clock::now(); },
                .startSampler =
                    [](auto sample) {
                      return std::make_unique<capture::PointerSampler>(std::move(sample));
                    },
                .startTicker =
                    [this](double seconds, auto tick) {
                      return loop_.tick(std::chrono::duration<double>{seconds}, std::move(tick));
                    },
                .postToMain = loop_.poster(),
                .chooseEncoder = std::move(chooseEncoder),
                .openMovie = capture::openRecordedMovie}} {}

}  // namespace vesk::app
