#include "app/PersistCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "motion/StoredSegment.h"
#include "package/EditDocumentCoding.h"

namespace vesk::app {
namespace {

namespace fs = std::filesystem;
using package::EditDocument;
using Segment = EditDocument::Segment;

constexpr std::string_view title = " 编辑持久化自检";

// Positions are kept in single precision while a recording is edited, so these are numbers that it
// holds exactly.
Segment segmentWithoutDefaults() {
  Segment segment;
  segment.id = "seg-x";
  segment.start = 1.25;
  segment.end = 4.7;
  segment.enabled = true;
  segment.sourceClickTime = 1.9;
  segment.level = 3.1;
  segment.focusX = 0.3125;
  segment.focusY = 0.6875;
  segment.followCursor = false;
  segment.deadzone = 0.41;
  segment.followSpeed = 0.83;
  segment.isManual = true;
  segment.endsWithExplicitReset = true;
  segment.easeIn = 0.61;
  segment.easeOut = 0.77;
  segment.holdMin = 1.3;
  segment.motionBlur = 0.21;
  segment.panDuration = 0.92;
  segment.waypoints = {{.t = 2.4, .x = 0.125, .y = 0.75}, {.t = 3.3, .x = 0.875, .y = 0.0625}};
  return segment;
}

Segment disabledSegment() {
  Segment segment = segmentWithoutDefaults();
  segment.id = "seg-off";
  segment.start = 6.5;
  segment.end = 9.1;
  segment.enabled = false;
  segment.sourceClickTime = std::nullopt;
  return segment;
}

/// Whether each segment that was disabled is there and still is.
bool keepsDisabledSegments(const EditDocument& written, const EditDocument& read) {
  const auto isDisabledInRead = [&](const Segment& segment) {
    return read.segments && std::ranges::any_of(*read.segments, [&](const Segment& other) {
             return other.id == segment.id && !other.enabled;
           });
  };
  return written.segments && std::ranges::all_of(*written.segments, [&](const Segment& segment) {
           return segment.enabled || isDisabledInRead(segment);
         });
}

std::string textOf(const EditDocument& document) {
  const auto text = package::encodeEditDocument(document);
  return text ? *text : text.error().message;
}

CheckOutcome stopped(std::string_view reason) {
  SelfCheck check(title);
  check.line(reason);
  return check.stop(1);
}

/// Nothing when there is no temporary directory. That the package could not be made shows when the
/// document is saved.
std::optional<fs::path> emptyPackage() {
  std::error_code error;
  fs::path package = fs::temp_directory_path(error) / "tq-persist-test.recording";
  if (error) {
    return std::nullopt;
  }
  fs::remove_all(package, error);
  fs::create_directory(package, error);
  return package;
}

std::uintmax_t sizeOf(const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  return error ? 0 : size;
}

}  // namespace

EditDocument documentWithoutDefaults() {
  EditDocument document;
  document.version = 2;
  document.segments = {segmentWithoutDefaults(), disabledSegment()};
  document.sensitivity = "密集";
  document.useAutoDetection = false;
  document.followSpeed = 0.47;
  document.ripple.style = 2;
  document.ripple.size = 0.033;
  document.ripple.duration = 0.41;
  document.ripple.color = {0.12, 0.34, 0.56, 0.78};
  document.ripple.opacity = 0.36;
  document.ripple.stroke = false;
  document.ripple.enabled = false;
  document.cursor.visible = false;
  document.cursor.style = "准星";
  document.cursor.scale = 2.3;
  document.cursor.smoothing = 0.35;
  document.cursor.smoothingWindow = 0.27;
  document.cursor.clickShrink = 0.29;
  document.camera3D.enabled = true;
  document.camera3D.fov = 44;
  document.camera3D.yaw = 31;
  document.camera3D.pitch = 19;
  document.camera3D.roll = -7;
  document.transitionEase = "电影";
  document.pip.enabled = false;
  document.pip.shape = "圆角";
  document.pip.size = 0.31;
  document.pip.centerX = 0.155;
  document.pip.centerY = 0.2;
  document.pip.cornerRadius = 0.26;
  document.pip.border = 0.027;
  document.pip.shadow = 0.4;
  document.pip.mirrored = false;
  document.frame.enabled = true;
  document.frame.background = "纯色";
  document.frame.padding = 0.13;
  document.frame.cornerRadius = 0.045;
  document.frame.shadow = 0.9;
  document.frame.colorA = {0.9, 0.8, 0.7, 0.6};
  document.frame.colorB = {0.1, 0.2, 0.3, 0.4};
  document.motionBlurEnabled = false;
  document.motionBlurStrength = 0.55;
  document.systemVolume = 0.37;
  document.micVolume = 1.62;
  return document;
}

CheckOutcome judge(const PersistedDocument& persisted) {
  const bool isSame = persisted.read == persisted.written;
  const bool keepsDisabled = keepsDisabledSegments(persisted.written, persisted.read);
  const bool convertsBack = persisted.backAndForth == persisted.stored;
  SelfCheck check(title);
  check.line(fmt::format("  整份往返比对  {}", isSame ? "✓ 一致" : "✗ 有字段丢失或变形"));
  check.line(fmt::format("  段停用状态    {}", keepsDisabled ? "✓ 停用不丢失" : "✗ enabled 没存"));
  check.line(fmt::format("  段互转往返    {}", convertsBack ? "✓ 一致" : "✗ 互转丢字段"));
  if (isSame && keepsDisabled && convertsBack) {
    check.line(fmt::format("\n  edit.json {} 字节", persisted.fileSize));
    return check.stop(0);
  }
  check.line("\n  写入：" + textOf(persisted.written));
  check.line("\n  读回：" + textOf(persisted.read));
  return check.stop(1);
}

CheckOutcome checkPersistence(package::Timestamp now) {
  const auto package = emptyPackage();
  if (!package) {
    return stopped("✗ 写盘失败：没有可用的临时文件夹。");
  }
  const EditDocument document = documentWithoutDefaults();
  if (const auto saved = document.save(*package); !saved) {
    return stopped("✗ 写盘失败：" + saved.error().message);
  }
  const auto loaded = EditDocument::load(*package, now);
  if (const auto* corrupt = loaded.corrupt()) {
    return stopped("✗ 读不回来：" + corrupt->error.message);
  }
  if (loaded.none()) {
    return stopped("✗ 读不回来：文件不存在");
  }
  const Segment& stored = document.segments->front();
  return judge({.written = document,
                .read = *loaded.ok(),
                .fileSize = sizeOf(*package / "edit.json"),
                .stored = stored,
                .backAndForth = motion::storedSegment(motion::zoomSegment(stored))});
}

}  // namespace vesk::app
