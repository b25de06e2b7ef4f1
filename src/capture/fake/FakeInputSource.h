#pragma once

#include <atomic>
#include <mutex>

#include "capture/InputSource.h"

namespace vesk::capture::fake {

/// A mouse and a keyboard in the hands of a test. May be used from any thread.
class FakeInputSource final : public InputSource {
 public:
  std::expected<std::unique_ptr<Listening>, BackendError> listen(bool includesKeys,
                                                                 Callback callback) override;
  std::optional<ScreenPoint> pointerPosition() const override;
  bool isSecureInput() const override { return isSecureInput_; }

  /// Calls back on this thread.
  void send(const InputEvent& event) { listeners_.call(event); }
  void setPointer(std::optional<ScreenPoint> position);
  void setSecureInput(bool isSecureInput) { isSecureInput_ = isSecureInput; }
  /// From now on nobody can listen.
  void fail(BackendError error);

 private:
  Listeners<const InputEvent&> listeners_;
  std::atomic<bool> isSecureInput_ = false;
  mutable std::mutex mutex_;  ///< guards what follows
  std::optional<ScreenPoint> pointer_ = ScreenPoint{};
  std::optional<BackendError> failure_;
};

}  // namespace vesk::capture::fake
