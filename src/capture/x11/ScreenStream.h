#pragma once

#include <memory>
#include <thread>

#include "capture/ScreenSource.h"
#include "capture/x11/ScreenView.h"

namespace vesk::capture::x11 {

/// Looks at a view at a steady rate, on a thread of its own. Its end does not wait for a display
/// server that stands still.
class ScreenStream final : public Listening {
 public:
  /// @param keptAlive must live as long as the view.
  ScreenStream(std::unique_ptr<ScreenView> view, std::shared_ptr<const void> keptAlive, int fps,
               ScreenSource::OnFrame onFrame, ScreenSource::OnEnd onEnd);
  ~ScreenStream() override;

 private:
  std::shared_ptr<const void> keptAlive_;
  std::unique_ptr<ScreenView> view_;
  std::jthread thread_;
};

}  // namespace vesk::capture::x11
