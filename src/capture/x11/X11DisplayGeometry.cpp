#include "capture/x11/X11DisplayGeometry.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "capture/Geometry.h"
#include "capture/x11/ClientWindows.h"
#include "capture/x11/PointerPosition.h"
#include "capture/x11/WindowOwner.h"

namespace vesk::capture::x11 {
namespace {

/// Source: Fowler, Noll, Vo, "The FNV Non-Cryptographic Hash Algorithm", FNV-1a of 32 bits.
std::uint32_t numberOfName(std::string_view name) {
  std::uint32_t hash = 0x811C9DC5;
  for (const char letter : name) {
    hash = (hash ^ static_cast<unsigned char>(letter)) * 0x01000193;
  }
  return hash;
}

std::string atomName(const Connection& connection, std::uint32_t atom) {
  const auto reply = owned(xcb_get_atom_name_reply(
      connection.get(), xcb_get_atom_name(connection.get(), atom), nullptr));
  if (!reply) return {};
  return {xcb_get_atom_name_name(reply.get()),
          static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

std::vector<Display> monitors(const Connection& connection) {
  // A request to an extension that is not there would cost the connection.
  const auto* const extension = xcb_get_extension_data(connection.get(), &xcb_randr_id);
  if (!extension || extension->present == 0) return {};
  const auto reply = owned(xcb_randr_get_monitors_reply(
      connection.get(), xcb_randr_get_monitors(connection.get(), connection.root(), 1), nullptr));
  if (!reply) return {};
  std::vector<Display> displays;
  auto next = xcb_randr_get_monitors_monitors_iterator(reply.get());
  for (; next.rem > 0; xcb_randr_monitor_info_next(&next)) {
    const auto& monitor = *next.data;
    const Display display{.id = numberOfName(atomName(connection, monitor.name)),
                          .frame = {.x = static_cast<double>(monitor.x),
                                    .y = static_cast<double>(monitor.y),
                                    .width = static_cast<double>(monitor.width),
                                    .height = static_cast<double>(monitor.height)}};
    displays.insert(monitor.primary != 0 ? displays.begin() : displays.end(), display);
  }
  return displays;
}

Display wholeScreen(const Connection& connection) {
  return {.id = numberOfName("screen"),
          .frame = {.width = static_cast<double>(connection.screen().width_in_pixels),
                    .height = static_cast<double>(connection.screen().height_in_pixels)}};
}

/// How far a display is from a point in x and y, the larger of the two; 0 inside.
double distance(const package::Rect& frame, const ScreenPoint& point) {
  const double x = std::max({frame.x - point.x, point.x - (frame.x + frame.width), 0.0});
  const double y = std::max({frame.y - point.y, point.y - (frame.y + frame.height), 0.0});
  return std::max(x, y);
}

ScreenPoint centreOf(const package::Rect& frame) {
  return {.x = frame.x + frame.width / 2, .y = frame.y + frame.height / 2};
}

}  // namespace

std::expected<std::unique_ptr<X11DisplayGeometry>, BackendError> X11DisplayGeometry::open(
    const std::string& display) {
  auto connection = Connection::open(display);
  if (!connection) return std::unexpected(connection.error());
  return std::unique_ptr<X11DisplayGeometry>{new X11DisplayGeometry{*std::move(connection)}};
}

X11DisplayGeometry::X11DisplayGeometry(Connection connection)
    : connection_{std::move(connection)} {}

std::vector<Display> X11DisplayGeometry::displays() const {
  auto displays = monitors(connection_);
  if (displays.empty() && connection_.isAlive()) displays.push_back(wholeScreen(connection_));
  return displays;
}

std::optional<Display> X11DisplayGeometry::focusedDisplay() const {
  const auto all = displays();
  if (all.empty()) return std::nullopt;
  const auto active = activeFrame();
  const auto at = active ? std::optional{centreOf(*active)} : pointerPosition(connection_);
  if (!at) return all.front();
  return *std::ranges::min_element(
      all, {}, [&](const Display& display) { return distance(display.frame, *at); });
}

std::expected<std::vector<ScreenWindow>, BackendError> X11DisplayGeometry::windows() const {
  std::vector<ScreenWindow> windows;
  for (const auto window : clientWindows(connection_)) {
    if (!isShownWindow(connection_, window)) continue;
    const auto frame = frameOf(connection_, window);
    if (!frame) continue;
    windows.push_back({.id = window,
                       .title = windowTitle(connection_, window),
                       .owner = windowOwner(connection_, window),
                       .frame = *frame});
  }
  if (!connection_.isAlive()) return std::unexpected(BackendError{"X 显示服务器已经断开"});
  return windows;
}

std::optional<package::Rect> X11DisplayGeometry::windowFrame(std::uint32_t id) const {
  const auto frame = frameOf(connection_, id);
  if (!frame || !isUsableFrame(*frame)) return std::nullopt;
  return frame;
}

std::optional<package::Rect> X11DisplayGeometry::activeFrame() const {
  const auto window =
      connection_.number(connection_.root(), connection_.atom("_NET_ACTIVE_WINDOW"));
  if (!window || *window == XCB_WINDOW_NONE) return std::nullopt;
  return frameOf(connection_, *window);
}

}  // namespace vesk::capture::x11
