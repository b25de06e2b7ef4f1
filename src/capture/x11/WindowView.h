#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "capture/x11/DamageWatch.h"
#include "capture/x11/PixelReader.h"
#include "capture/x11/ScreenEvents.h"
#include "capture/x11/ScreenView.h"

namespace vesk::capture::x11 {

/// A window with its decoration, whatever covers it. All windows on the screen must be redirected.
/// Of a window that has gone the last picture stands, as of one that is not shown.
class WindowView final : public ScreenView {
 public:
  /// @param size of the picture. A window that is larger by the one pixel that makes a number odd
  /// is
  ///     cut, not scaled.
  /// @param scaleFactor pixels per unit of the screen.
  static std::expected<std::unique_ptr<WindowView>, BackendError> open(Connection connection,
                                                                       std::uint32_t window,
                                                                       PixelSize size,
                                                                       double scaleFactor);
  ~WindowView() override;

  std::expected<ScreenFrame, ScreenStreamEnd> look() override;
  void abandon() override { connection_.abandon(); }

 private:
  WindowView(Connection connection, std::uint32_t window, PixelSize size, double scaleFactor);
  void takeEvents();
  void followWindow();
  void followFrame(std::uint32_t frame);
  void rename();
  void releasePixmap();
  std::expected<void, ReadFailure> read(const PixelRegion& drawn);
  [[nodiscard]] PixelSize placed() const;
  [[nodiscard]] Pixels pixels();

  Connection connection_;
  std::uint32_t window_;
  PixelSize size_;
  double scaleFactor_;
  ScreenEvents events_;
  PixelReader reader_;
  std::vector<std::uint32_t> picture_;
  std::uint32_t frame_ =
      0;  ///< what lies on the screen: the window or the window manager's around it
  std::unique_ptr<DamageWatch> damage_;
  std::uint32_t pixmap_ = 0;  ///< the frame's contents; 0 while it is not shown
  PixelSize frameSize_;       ///< of the contents
  int border_ = 0;
  bool isStale_ = true;    ///< the window has changed in a way that must be asked for
  bool isUnnamed_ = true;  ///< the frame has other contents than those that are named
  bool isUnread_ = true;   ///< all of it is to be read
  bool isFirst_ = true;
};

}  // namespace vesk::capture::x11
