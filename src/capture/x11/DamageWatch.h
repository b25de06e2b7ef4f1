#pragma once

#include <cstdint>

#include "capture/x11/Connection.h"
#include "capture/x11/PixelRegion.h"
#include "capture/x11/ScreenEvents.h"

namespace vesk::capture::x11 {

/// Learns of everything that is drawn into a window and those inside it. To be used by one thread.
class DamageWatch {
 public:
  /// @param connection must outlive the watch.
  DamageWatch(const Connection& connection, std::uint32_t window);
  DamageWatch(const DamageWatch&) = delete;
  DamageWatch& operator=(const DamageWatch&) = delete;
  ~DamageWatch();

  /// Must be told of every event.
  void note(const ScreenEvent& event);

  /// What was drawn since the last call, relative to the window's inside. Asks the server only when
  /// there is something.
  PixelRegion take();

 private:
  const Connection& connection_;
  std::uint32_t damage_;
  std::uint32_t region_;  ///< into which the server moves what it has noted
  bool isDamaged_ = false;
};

/// The rectangles of a region of the server's.
PixelRegion fetchRegion(const Connection& connection, std::uint32_t region);

}  // namespace vesk::capture::x11
