#pragma once

#include <expected>
#include <memory>
#include <string>

#include "capture/ScreenSource.h"

namespace vesk::capture::x11 {

/// The screen of an X server. To be made before the program's first window is shown: windows that
/// are there already are missing under it until they draw themselves again.
class X11ScreenSource final : public ScreenSource {
 public:
  /// @param display such as ":0"; empty for that of the environment.
  static std::expected<std::unique_ptr<X11ScreenSource>, BackendError> open(
      const std::string& display = {});
  ~X11ScreenSource() override;

  /// The stream of a window goes on when the window is closed: its last picture stands.
  std::expected<std::unique_ptr<Listening>, BackendError> stream(const ScreenRequest& request,
                                                                 OnFrame onFrame,
                                                                 OnEnd onEnd) override;

 private:
  struct Redirection;

  X11ScreenSource(std::string display, std::shared_ptr<Redirection> redirection);

  std::string display_;
  std::shared_ptr<Redirection> redirection_;  ///< also of the streams, which may outlive the source
};

}  // namespace vesk::capture::x11
