#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "capture/BackendError.h"
#include "capture/Geometry.h"
#include "capture/Listening.h"
#include "media/HostTime.h"
#include "media/PictureConverter.h"
#include "package/CaptureScope.h"

namespace vesk::capture {

/// What is to be seen in a stream of the screen.
struct ScreenRequest {
  struct Area {
    package::Rect rect;  ///< on the screen
    bool operator==(const Area&) const = default;
  };
  struct Window {
    std::uint32_t id = 0;
    bool operator==(const Window&) const = default;
  };

  std::variant<Area, Window> subject;
  PixelSize size;          ///< of every picture; even, and the same until the end
  double scaleFactor = 1;  ///< pixels per unit of the screen
  int fps = 60;            ///< frames a second at most
  bool operator==(const ScreenRequest&) const = default;
};

/// One look at the screen.
struct ScreenFrame {
  enum class Status : std::uint8_t {
    complete,  ///< with pixels that are new since the frame before
    idle,      ///< nothing has changed
  };

  Status status = Status::idle;
  media::HostTime stamp{};
  /// Where in the picture the content lies, in units of the screen from the picture's top left.
  /// A window that has become smaller or larger than the picture does not fill it.
  std::optional<package::Rect> contentRect;
  /// Of a complete frame: opaque sRGB, of the size that was asked for, without the cursor. To be
  /// read during the callback only.
  media::BgraView pixels;
};

/// Why a stream ended by itself.
struct ScreenStreamEnd {
  enum class Cause : std::uint8_t {
    resources,  ///< the system had too little memory or disk for it
    other,
  };

  Cause cause = Cause::other;
  std::string message;  ///< a clause in the user's language without its full stop
  bool operator==(const ScreenStreamEnd&) const = default;
};

/// The pictures of displays, parts of them and windows.
///
/// The program's own windows are never in the picture of an area: what lies beneath them is. A
/// window's picture has the whole window, whatever covers it, with its top left corner at the
/// picture's; a window larger than the picture is scaled down to fit, a smaller one leaves black
/// around it, and while it is not shown its last picture stands.
class ScreenSource {
 public:
  using OnFrame = std::function<void(const ScreenFrame&)>;
  using OnEnd = std::function<void(const ScreenStreamEnd&)>;

  virtual ~ScreenSource() = default;

  /// Calls back on a thread of the stream's own, at most `fps` times a second on a steady clock,
  /// with two complete frames first, whatever the screen does: a movie needs two pictures to have a
  /// length. `onEnd` is called once, when no further frame will come although
  /// nobody ended the stream. A subject that is not there is an error.
  virtual std::expected<std::unique_ptr<Listening>, BackendError> stream(
      const ScreenRequest& request, OnFrame onFrame, OnEnd onEnd) = 0;
};

}  // namespace vesk::capture
