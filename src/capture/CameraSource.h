#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "capture/BackendError.h"
#include "capture/Geometry.h"
#include "capture/Listening.h"
#include "media/HostTime.h"
#include "media/PictureConverter.h"

namespace vesk::capture {

struct CameraDevice {
  std::string id;    ///< unique among the devices of its source
  std::string name;  ///< what the user calls it
  std::string type;  ///< how it is connected, such as "PipeWire" or "V4L2"
  bool operator==(const CameraDevice&) const = default;
};

struct CameraFrame {
  media::HostTime stamp{};  ///< when it was taken
  /// Opaque, upright. To be read during the callback only.
  media::BgraView pixels;
};

/// Why a camera gives no pictures.
struct CameraRefusal {
  enum class Cause : std::uint8_t {
    busy,  ///< somebody else uses it
    other,
  };

  Cause cause = Cause::other;
  std::string message;  ///< a clause in the user's language without its full stop
  bool operator==(const CameraRefusal&) const = default;
};

/// The cameras of this machine.
class CameraSource {
 public:
  using OnFrame = std::function<void(const CameraFrame&)>;
  using OnEnd = std::function<void(const BackendError&)>;

  virtual ~CameraSource() = default;

  /// The one to be preferred first.
  virtual std::vector<CameraDevice> devices() = 0;

  /// Calls back on a thread of the source's own; a frame that comes while a callback runs is left
  /// out in favour of a later one. `onEnd` is called once, when no further frame will come although
  /// nobody ended the stream.
  /// @param size that the pictures should have; a camera that has none of it gives its closest.
  virtual std::expected<std::unique_ptr<Listening>, CameraRefusal> listen(
      const CameraDevice& device, PixelSize size, OnFrame onFrame, OnEnd onEnd) = 0;
};

}  // namespace vesk::capture
