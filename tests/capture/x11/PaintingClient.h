#pragma once

#include <cstdint>

#include "capture/x11/Connection.h"
#include "media/PictureConverter.h"

struct xcb_connection_t;

namespace vesk::capture::x11::test {

/// A client of a display server that shows windows of one colour, 0xRRGGBB. What it does has been
/// done when a call returns. The windows stay until they are closed or the client goes.
class PaintingClient {
 public:
  enum class Process { own, another };

  /// @param process whose the server takes the client to be.
  PaintingClient(const std::string& display, Process process);
  PaintingClient(const PaintingClient&) = delete;
  PaintingClient& operator=(const PaintingClient&) = delete;
  ~PaintingClient();

  struct Look {
    bool isManaged = false;  ///< left to the window manager, where there is one
    std::uint16_t border = 0;
  };
  /// Shows a window that the server fills with its colour whenever it appears.
  std::uint32_t open(const media::PixelRect& rect, std::uint32_t colour, const Look& look);
  std::uint32_t open(const media::PixelRect& rect, std::uint32_t colour) {
    return open(rect, colour, {});
  }
  /// The same with an opacity, 0xAARRGGBB with the colours multiplied by it.
  std::uint32_t openBlended(const media::PixelRect& rect, std::uint32_t colour);

  void draw(std::uint32_t window, const media::PixelRect& rect, std::uint32_t colour) const;
  /// Gives the screen's own window a colour, which the server draws where other windows go away.
  void setBackground(std::uint32_t colour) const;
  /// Draws on the screen's own window, where no other is.
  void drawOnScreen(const media::PixelRect& rect, std::uint32_t colour) const;
  void place(std::uint32_t window, const media::PixelRect& rect) const;
  void raise(std::uint32_t window) const;
  void show(std::uint32_t window) const;
  void hide(std::uint32_t window) const;
  void close(std::uint32_t window) const;
  /// Leaves only a part of the window, in its own coordinates.
  void shape(std::uint32_t window, const media::PixelRect& rect) const;
  /// Asks the window manager to make an icon of it.
  void iconify(std::uint32_t window) const;
  /// Names a pixmap of one colour as the background's, as programs that set wallpapers do.
  void setWallpaper(std::uint32_t colour) const;

 private:
  std::uint32_t create(const media::PixelRect& rect, std::uint32_t colour, const Look& look,
                       std::uint8_t depth, std::uint32_t visual, std::uint32_t colourMap);
  [[nodiscard]] std::uint32_t root() const;
  void sync() const;

  xcb_connection_t* connection_;
};

}  // namespace vesk::capture::x11::test
