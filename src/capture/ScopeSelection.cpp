#include "capture/ScopeSelection.h"

#include <utility>

#include "capture/ScopeGeometry.h"

namespace vesk::capture {

using package::CaptureScope;

ScopeSelection::ScopeSelection(const DisplayGeometry& geometry) : geometry_{geometry} {}

void ScopeSelection::setKind(Kind kind) {
  assign(kind_, kind);
}

void ScopeSelection::setPickedWindow(std::optional<WindowChoice> window) {
  assign(pickedWindow_, std::move(window));
}

void ScopeSelection::setPickedRegion(std::optional<package::Rect> region) {
  assign(pickedRegion_, region);
}

void ScopeSelection::setPickedRegionDisplay(std::optional<std::uint32_t> displayID) {
  assign(pickedRegionDisplay_, displayID);
}

void ScopeSelection::setWindowList(std::vector<WindowChoice> windows) {
  assign(windowList_, std::move(windows));
}

package::ChangeSignal::Subscription ScopeSelection::onChange(
    package::ChangeSignal::Observer observer) {
  return changed_.subscribe(std::move(observer));
}

CaptureScope ScopeSelection::resolvedScope() const {
  if (kind_ == Kind::window && pickedWindow_) return {CaptureScope::Window{pickedWindow_->id}};
  if (kind_ == Kind::region && pickedRegion_ && pickedRegionDisplay_) {
    return {CaptureScope::Region{.displayID = *pickedRegionDisplay_, .rect = *pickedRegion_}};
  }
  return {CaptureScope::Display{defaultDisplay(geometry_).value_or(Display{}).id}};
}

bool ScopeSelection::isReady() const {
  switch (kind_) {
    case Kind::display:
      return true;
    case Kind::window:
      return pickedWindow_.has_value();
    case Kind::region:
      return pickedRegion_.has_value();
  }
  std::unreachable();
}

template <typename T>
void ScopeSelection::assign(T& field, T value) {
  if (field == value) return;
  field = std::move(value);
  changed_.notify();
}

}  // namespace vesk::capture
