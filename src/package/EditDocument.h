#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "package/FileSystemCalls.h"
#include "package/PackageError.h"
#include "package/RecordingMeta.h"
#include "package/StyleSettings.h"

namespace vesk::package {

/// What the user decided about one recording, the file "edit.json": the effect segments and all
/// settings of the look. The fields bear the names of their JSON keys and the defaults that an
/// absent key takes. Enumerations stand as their raw values, so that one which a later version no
/// longer knows still loads and falls back only where it is applied. Units are those of the live
/// records: seconds on the recording's clock, positions normalised to the picture with y down.
struct EditDocument {
  /// The stored form of an effect; see motion/StoredSegment.h for the live one.
  struct Segment {
    struct Waypoint {
      double t = 0;
      double x = 0;
      double y = 0;
      bool operator==(const Waypoint&) const = default;
    };

    std::string id;  ///< absent in a file: "seg_" and the start in whole milliseconds
    double start = 0;
    double end = 0;
    bool enabled = true;
    std::optional<double> sourceClickTime;
    double level = 2.0;
    double focusX = 0.5;
    double focusY = 0.5;
    bool followCursor = true;
    double deadzone = 0.67;
    double followSpeed = 0.3;
    bool isManual = false;
    bool endsWithExplicitReset = false;
    double easeIn = 0.45;
    double easeOut = 0.55;
    double holdMin = 0.8;
    double motionBlur = 0.35;
    double panDuration = 0.55;
    std::vector<Waypoint> waypoints;
    bool operator==(const Segment&) const = default;
  };

  struct RippleDoc {
    double style = 0.0;
    double size = 0.022;
    double duration = 0.25;
    std::vector<double> color{1.0, 0.843, 0.0, 1.0};
    double opacity = 0.85;
    bool stroke = true;
    bool enabled = true;

    RippleDoc() = default;
    explicit RippleDoc(const RippleSettings& settings);
    void applyTo(RippleSettings& settings) const;
    bool operator==(const RippleDoc&) const = default;
  };

  struct CursorDoc {
    bool visible = true;
    std::string style = "箭头";
    double scale = 1.4;
    double smoothing = 0.7;
    double smoothingWindow = 0.12;
    double clickShrink = 0.12;

    CursorDoc() = default;
    explicit CursorDoc(const CursorSettings& settings);
    void applyTo(CursorSettings& settings) const;
    bool operator==(const CursorDoc&) const = default;
  };

  struct Camera3DDoc {
    bool enabled = false;
    double fov = 28.0;
    double yaw = 12.0;
    double pitch = 6.0;
    double roll = 0.0;

    Camera3DDoc() = default;
    explicit Camera3DDoc(const Camera3DSettings& settings);
    void applyTo(Camera3DSettings& settings) const;
    bool operator==(const Camera3DDoc&) const = default;
  };

  struct PiPDoc {
    bool enabled = true;
    std::string shape = "圆形";
    double size = 0.22;
    double centerX = 0.845;
    double centerY = 0.8;
    double cornerRadius = 0.18;
    double border = 0.018;
    double shadow = 0.0;
    bool mirrored = true;

    PiPDoc() = default;
    explicit PiPDoc(const PiPSettings& settings);
    void applyTo(PiPSettings& settings) const;
    bool operator==(const PiPDoc&) const = default;
  };

  struct FrameDoc {
    bool enabled = false;
    std::string background = "渐变";
    double padding = 0.07;
    double cornerRadius = 0.02;
    double shadow = 0.5;
    std::vector<double> colorA{0.075, 0.082, 0.11, 1.0};
    std::vector<double> colorB{0.15, 0.125, 0.195, 1.0};

    FrameDoc() = default;
    explicit FrameDoc(const FrameStyle& settings);
    void applyTo(FrameStyle& settings) const;
    bool operator==(const FrameDoc&) const = default;
  };

  struct LoadResult;

  std::int64_t version = 1;  ///< of the format; no reader acts on it
  /// Absent when nothing was saved yet and the effects are to be inferred; an empty list means that
  /// there are none and none are to be inferred.
  std::optional<std::vector<Segment>> segments;
  std::string sensitivity = "标准";
  bool useAutoDetection = true;
  double followSpeed = 0.3;
  RippleDoc ripple;
  CursorDoc cursor;
  Camera3DDoc camera3D;
  std::string transitionEase = "平稳";
  PiPDoc pip;
  FrameDoc frame;
  bool motionBlurEnabled = true;
  double motionBlurStrength = 1.0;
  double systemVolume = 1.0;
  double micVolume = 1.0;
  bool operator==(const EditDocument&) const = default;

  /// Reads "edit.json" of a package. A file that is no document is copied to
  /// "edit.json.corrupt-<stamp>" beside it before anything is saved over it. What cannot be read or
  /// is refused by packageFile is none, with a log entry.
  /// @param now gives the copy its stamp.
  static LoadResult load(const std::filesystem::path& package, Timestamp now);

  /// Replaces "edit.json" by this document, atomically and durably (see DurableWrite.h). On failure
  /// the old file stays; so does a file that the user has no right to read.
  std::expected<void, PackageError> save(const std::filesystem::path& package,
                                         FileSystemCalls& calls = systemCalls()) const;
};

/// What a load came to: a document, a damaged file, or no file to read.
struct EditDocument::LoadResult {
  struct Corrupt {
    PackageError error;
    std::optional<std::filesystem::path> backup;  ///< the copy; absent when it failed
    bool operator==(const Corrupt&) const = default;
  };
  struct None {
    bool operator==(const None&) const = default;
  };

  std::variant<None, EditDocument, Corrupt> outcome;

  /// The document, or null.
  const EditDocument* ok() const { return std::get_if<EditDocument>(&outcome); }
  /// The damage, or null.
  const Corrupt* corrupt() const { return std::get_if<Corrupt>(&outcome); }
  bool none() const { return std::holds_alternative<None>(outcome); }
  bool operator==(const LoadResult&) const = default;
};

}  // namespace vesk::package
