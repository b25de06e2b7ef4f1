#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "capture/DisplayGeometry.h"
#include "capture/WindowChoice.h"
#include "package/CaptureScope.h"
#include "package/ChangeSignal.h"

namespace vesk::capture {

/// What the user has chosen to record. To be used on the main thread.
class ScopeSelection {
 public:
  enum class Kind : std::uint8_t { display, window, region };

  /// @param geometry must outlive the selection.
  explicit ScopeSelection(const DisplayGeometry& geometry);

  Kind kind() const { return kind_; }
  const std::optional<WindowChoice>& pickedWindow() const { return pickedWindow_; }
  /// In global points.
  const std::optional<package::Rect>& pickedRegion() const { return pickedRegion_; }
  const std::optional<std::uint32_t>& pickedRegionDisplay() const { return pickedRegionDisplay_; }
  /// What there is to pick from, as of the last time the user looked.
  const std::vector<WindowChoice>& windowList() const { return windowList_; }

  // Observers hear of each change, and of no setting of a value that stands already.
  void setKind(Kind kind);
  void setPickedWindow(std::optional<WindowChoice> window);
  void setPickedRegion(std::optional<package::Rect> region);
  void setPickedRegionDisplay(std::optional<std::uint32_t> displayID);
  void setWindowList(std::vector<WindowChoice> windows);

  package::ChangeSignal::Subscription onChange(package::ChangeSignal::Observer observer);

  /// What is to be recorded; the default display while a window or region has yet to be picked.
  package::CaptureScope resolvedScope() const;

  /// Whether what is chosen can be recorded.
  bool isReady() const;

 private:
  template <typename T>
  void assign(T& field, T value);

  const DisplayGeometry& geometry_;
  Kind kind_ = Kind::display;
  std::optional<WindowChoice> pickedWindow_;
  std::optional<package::Rect> pickedRegion_;
  std::optional<std::uint32_t> pickedRegionDisplay_;
  std::vector<WindowChoice> windowList_;
  package::ChangeSignal changed_;
};

}  // namespace vesk::capture
