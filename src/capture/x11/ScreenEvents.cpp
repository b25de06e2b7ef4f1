#include "capture/x11/ScreenEvents.h"

#include <xcb/damage.h>
#include <xcb/xcb.h>

namespace vesk::capture::x11 {
namespace {

using ScreenEventKind = ScreenEvent::Kind;

constexpr std::uint8_t withoutSentMark = 0x7F;

template <typename Event>
const Event& as(const xcb_generic_event_t& event) {
  return reinterpret_cast<const Event&>(event);
}

template <typename Event>
ScreenEvent ofWindow(ScreenEventKind kind, const xcb_generic_event_t& event) {
  return {.kind = kind, .subject = as<Event>(event).window};
}

std::optional<ScreenEvent> decoded(const xcb_generic_event_t& event, std::uint8_t damageEvent) {
  const std::uint8_t type = event.response_type & withoutSentMark;
  if (type == damageEvent) {
    return ScreenEvent{.kind = ScreenEventKind::damaged,
                       .subject = as<xcb_damage_notify_event_t>(event).damage};
  }
  switch (type) {
    case XCB_CONFIGURE_NOTIFY:
      return ofWindow<xcb_configure_notify_event_t>(ScreenEventKind::restacked, event);
    case XCB_CIRCULATE_NOTIFY:
      return ofWindow<xcb_circulate_notify_event_t>(ScreenEventKind::restacked, event);
    case XCB_MAP_NOTIFY:
      return ofWindow<xcb_map_notify_event_t>(ScreenEventKind::mapped, event);
    case XCB_UNMAP_NOTIFY:
      return ofWindow<xcb_unmap_notify_event_t>(ScreenEventKind::unmapped, event);
    case XCB_REPARENT_NOTIFY:
      return ofWindow<xcb_reparent_notify_event_t>(ScreenEventKind::reparented, event);
    case XCB_DESTROY_NOTIFY:
      return ofWindow<xcb_destroy_notify_event_t>(ScreenEventKind::destroyed, event);
    case XCB_PROPERTY_NOTIFY: {
      const auto& change = as<xcb_property_notify_event_t>(event);
      return ScreenEvent{
          .kind = ScreenEventKind::property, .subject = change.window, .atom = change.atom};
    }
    default:
      return std::nullopt;  // also the errors of requests that nobody waits for
  }
}

}  // namespace

ScreenEvents::ScreenEvents(const Connection& connection) : connection_{connection} {
  const auto* const extension = xcb_get_extension_data(connection.get(), &xcb_damage_id);
  damageEvent_ =
      static_cast<std::uint8_t>(extension ? extension->first_event + XCB_DAMAGE_NOTIFY : 0xFF);
}

std::optional<ScreenEvent> ScreenEvents::next() const {
  while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
    if (const auto result = decoded(*event, damageEvent_)) return result;
  }
  return std::nullopt;
}

}  // namespace vesk::capture::x11
