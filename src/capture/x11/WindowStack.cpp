#include "capture/x11/WindowStack.h"

#include <xcb/xcb.h>

#include <optional>
#include <utility>

#include "capture/x11/WindowTree.h"

namespace vesk::capture::x11 {
namespace {

constexpr int blendedDepth = 32;

/// The two questions about a window, asked together.
struct Inquiry {
  std::uint32_t window;
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_geometry_cookie_t geometry;
};

std::optional<StackedWindow> answered(const Connection& connection, const Inquiry& inquiry) {
  const auto attributes =
      owned(xcb_get_window_attributes_reply(connection.get(), inquiry.attributes, nullptr));
  const auto geometry = owned(xcb_get_geometry_reply(connection.get(), inquiry.geometry, nullptr));
  if (!attributes || !geometry) return std::nullopt;
  const bool isShown = attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
                       attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
  if (!isShown) return std::nullopt;
  return StackedWindow{.id = inquiry.window,
                       .frame = {.x = geometry->x,
                                 .y = geometry->y,
                                 .width = geometry->width + 2 * geometry->border_width,
                                 .height = geometry->height + 2 * geometry->border_width},
                       .border = geometry->border_width,
                       .isBlended = geometry->depth == blendedDepth};
}

}  // namespace

WindowStack::WindowStack(const Connection& connection)
    : connection_{connection}, ownProcess_{x11::ownProcess(connection)} {
  constexpr std::uint32_t wanted = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                                   XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &wanted);
}

void WindowStack::note(const ScreenEvent& event) {
  using Kind = ScreenEvent::Kind;
  if (event.kind == Kind::damaged || event.kind == Kind::property) return;
  isStale_ = true;
  // A frame belongs to nobody until an application's window has been put into it.
  if (event.kind == Kind::reparented) ownership_.clear();
  if (event.kind == Kind::mapped || event.kind == Kind::destroyed) ownership_.erase(event.subject);
}

bool WindowStack::refresh() {
  if (!std::exchange(isStale_, false)) return false;
  auto windows = ask();
  for (StackedWindow& window : windows) window.isOwn = isOwn(window.id);
  return std::exchange(windows_, std::move(windows)) != windows_;
}

std::vector<StackedWindow> WindowStack::ask() const {
  std::vector<Inquiry> inquiries;
  for (const std::uint32_t window : childrenOf(connection_, connection_.root())) {
    inquiries.push_back({.window = window,
                         .attributes = xcb_get_window_attributes(connection_.get(), window),
                         .geometry = xcb_get_geometry(connection_.get(), window)});
  }
  std::vector<StackedWindow> windows;
  for (const Inquiry& inquiry : inquiries) {
    if (const auto window = answered(connection_, inquiry)) windows.push_back(*window);
  }
  return windows;
}

bool WindowStack::isOwn(std::uint32_t toplevel) {
  const auto known = ownership_.find(toplevel);
  if (known != ownership_.end()) return known->second;
  const bool result = belongsTo(connection_, toplevel, ownProcess_);
  ownership_[toplevel] = result;
  return result;
}

PixelRegion WindowStack::ownRegion() const {
  PixelRegion region;
  for (const StackedWindow& window : windows_) {
    if (window.isOwn) region.add(window.frame);
  }
  return region;
}

PixelRegion WindowStack::coveredRegion() const {
  PixelRegion region;
  for (const StackedWindow& window : windows_) region.add(window.frame);
  return region;
}

}  // namespace vesk::capture::x11
