#include "capture/x11/DamageWatch.h"

#include <xcb/damage.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace vesk::capture::x11 {

DamageWatch::DamageWatch(const Connection& connection, std::uint32_t window)
    : connection_{connection},
      damage_{xcb_generate_id(connection.get())},
      region_{xcb_generate_id(connection.get())} {
  xcb_damage_create(connection_.get(), damage_, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
  xcb_xfixes_create_region(connection_.get(), region_, 0, nullptr);
}

DamageWatch::~DamageWatch() {
  xcb_damage_destroy(connection_.get(), damage_);
  xcb_xfixes_destroy_region(connection_.get(), region_);
}

void DamageWatch::note(const ScreenEvent& event) {
  if (event.kind == ScreenEvent::Kind::damaged && event.subject == damage_) isDamaged_ = true;
}

// What is drawn after the subtraction is told of anew, so nothing is lost between the two requests.
PixelRegion DamageWatch::take() {
  if (!std::exchange(isDamaged_, false)) return {};
  xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, region_);
  return fetchRegion(connection_, region_);
}

PixelRegion fetchRegion(const Connection& connection, std::uint32_t region) {
  const auto reply = owned(xcb_xfixes_fetch_region_reply(
      connection.get(), xcb_xfixes_fetch_region(connection.get(), region), nullptr));
  if (!reply) return {};
  const std::span rects{
      xcb_xfixes_fetch_region_rectangles(reply.get()),
      static_cast<std::size_t>(xcb_xfixes_fetch_region_rectangles_length(reply.get()))};
  std::vector<media::PixelRect> result;
  for (const auto& rect : rects) {
    result.push_back({.x = rect.x, .y = rect.y, .width = rect.width, .height = rect.height});
  }
  return PixelRegion{std::move(result)};
}

}  // namespace vesk::capture::x11
