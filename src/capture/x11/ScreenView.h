#pragma once

#include <expected>

#include "capture/ScreenSource.h"

namespace vesk::capture::x11 {

/// What a stream looks at. To be used by the stream's thread.
class ScreenView {
 public:
  ScreenView() = default;
  ScreenView(const ScreenView&) = delete;
  ScreenView& operator=(const ScreenView&) = delete;
  virtual ~ScreenView() = default;

  /// The first time a complete frame. Its pixels are valid until the next one that is complete.
  virtual std::expected<ScreenFrame, ScreenStreamEnd> look() = 0;

  /// Makes look() fail soon, also one that waits for the server. May be called from any thread.
  virtual void abandon() = 0;
};

}  // namespace vesk::capture::x11
