#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "package/RecordingMeta.h"
#include "package/StyleSettings.h"

namespace vesk::package {

/// What a list of recordings shows of one package.
struct RecordingItem {
  struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
  };

  std::filesystem::path url;  ///< the package directory; identifies the item
  Timestamp createdAt{};
  double duration = 0;  ///< seconds, 0 when the index has none
  Size pixelSize;
  std::int64_t fps = 60;
  CameraMode cameraMode = CameraMode::zoom;
  std::int64_t clickCount = 0;
  std::int64_t markCount = 0;
  std::int64_t bytes = 0;  ///< that the package occupies on the disk
  bool interrupted = false;
  bool hasMic = false;
  bool hasSystemAudio = false;

  /// "12.3s" below 60 whole seconds, else minutes and seconds as "3:07".
  std::string durationLabel() const;

  bool operator==(const RecordingItem&) const = default;
};

/// Looks at a package. Nothing comes of one without a readable index; a log that cannot be read
/// leaves the counts at 0. What stands in the place of its files is opened only as far as
/// packageFile lets it.
/// @param now see decodeRecordingMeta.
std::optional<RecordingItem> scanRecording(const std::filesystem::path& package, Timestamp now);

}  // namespace vesk::package
