#include "capture/x11/RawInput.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace vesk::capture::x11 {
namespace {

using InputKind = RawInput::Kind;

double toDouble(const xcb_input_fp3232_t& number) {
  constexpr double unit = 4294967296.0;
  return number.integral + number.frac / unit;
}

/// Not so when the user only took up another device.
bool isChangeOfDevice(const Event& event) {
  const auto& change = event.as<xcb_input_device_changed_event_t>();
  return change.event_type == XCB_INPUT_DEVICE_CHANGED &&
         change.reason == XCB_INPUT_CHANGE_REASON_DEVICE_CHANGE;
}

std::optional<InputKind> kindOfRaw(std::uint16_t eventType) {
  switch (eventType) {
    case XCB_INPUT_RAW_KEY_PRESS:
      return InputKind::keyPress;
    case XCB_INPUT_RAW_KEY_RELEASE:
      return InputKind::keyRelease;
    case XCB_INPUT_RAW_BUTTON_PRESS:
      return InputKind::buttonPress;
    case XCB_INPUT_RAW_BUTTON_RELEASE:
      return InputKind::buttonRelease;
    case XCB_INPUT_RAW_MOTION:
      return InputKind::motion;
    default:
      return std::nullopt;
  }
}

/// The event tells the values of those axes alone whose bit is set.
std::vector<ValuatorValue> valuesOf(const xcb_input_raw_button_press_event_t& event) {
  const auto* const mask = xcb_input_raw_button_press_valuator_mask(&event);
  const auto* value = xcb_input_raw_button_press_axisvalues(&event);
  std::vector<ValuatorValue> values;
  for (int valuator = 0; valuator < event.valuators_len * 32; ++valuator) {
    if ((mask[valuator / 32] >> (valuator % 32) & 1) == 0) continue;
    values.push_back({.valuator = valuator, .value = toDouble(*value)});
    ++value;
  }
  return values;
}

/// The parts of a device that are of a type. The structures of all types begin alike.
template <typename Part>
std::vector<const Part*> partsOf(const xcb_input_xi_device_info_t& device, std::uint16_t type) {
  std::vector<const Part*> parts;
  auto next = xcb_input_xi_device_info_classes_iterator(&device);
  for (; next.rem > 0; xcb_input_device_class_next(&next)) {
    const void* const part = next.data;
    if (next.data->type == type) parts.push_back(static_cast<const Part*>(part));
  }
  return parts;
}

std::vector<ScrollAxis> axesOf(const xcb_input_xi_device_info_t& device) {
  const auto scrolls =
      partsOf<xcb_input_scroll_class_t>(device, XCB_INPUT_DEVICE_CLASS_TYPE_SCROLL);
  const auto valuators =
      partsOf<xcb_input_valuator_class_t>(device, XCB_INPUT_DEVICE_CLASS_TYPE_VALUATOR);
  std::vector<ScrollAxis> axes;
  for (const auto* scroll : scrolls) {
    const auto isAbsolute = std::ranges::any_of(valuators, [&](const auto* valuator) {
      return valuator->number == scroll->number &&
             valuator->mode == XCB_INPUT_VALUATOR_MODE_ABSOLUTE;
    });
    axes.push_back({.valuator = scroll->number,
                    .isHorizontal = scroll->scroll_type == XCB_INPUT_SCROLL_TYPE_HORIZONTAL,
                    .isAbsolute = isAbsolute,
                    .increment = toDouble(scroll->increment)});
  }
  return axes;
}

}  // namespace

std::optional<RawInputs> RawInputs::open(const Connection& connection) {
  const auto* const extension = xcb_get_extension_data(connection.get(), &xcb_input_id);
  if (!extension || !extension->present) return std::nullopt;
  const auto version = owned(xcb_input_xi_query_version_reply(
      connection.get(), xcb_input_xi_query_version(connection.get(), 2, 2), nullptr));
  if (!version || version->major_version < 2) return std::nullopt;
  return RawInputs{connection, extension->major_opcode};
}

void RawInputs::select(bool includesKeys, bool includesMotion) const {
  struct Selection {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  };
  std::uint32_t raw = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                      XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE |
                      XCB_INPUT_XI_EVENT_MASK_DEVICE_CHANGED;
  if (includesKeys) {
    raw |= XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
  }
  if (includesMotion) raw |= XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
  const std::array<Selection, 2> selections{
      {{.head = {.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1}, .mask = raw},
       {.head = {.deviceid = XCB_INPUT_DEVICE_ALL, .mask_len = 1},
        .mask = XCB_INPUT_XI_EVENT_MASK_HIERARCHY}}};
  xcb_input_xi_select_events(connection_->get(), connection_->root(), selections.size(),
                             &selections.front().head);
}

std::map<std::uint16_t, ScrollAxes> RawInputs::scrollAxes() const {
  const auto reply = owned(xcb_input_xi_query_device_reply(
      connection_->get(), xcb_input_xi_query_device(connection_->get(), XCB_INPUT_DEVICE_ALL),
      nullptr));
  std::map<std::uint16_t, ScrollAxes> axesOfDevices;
  if (!reply) return axesOfDevices;
  auto next = xcb_input_xi_query_device_infos_iterator(reply.get());
  for (; next.rem > 0; xcb_input_xi_device_info_next(&next)) {
    const ScrollAxes axes{axesOf(*next.data)};
    if (!axes.isEmpty()) axesOfDevices.emplace(next.data->deviceid, axes);
  }
  return axesOfDevices;
}

std::optional<RawInput> RawInputs::read(const Event& event) const {
  const auto& head = event.as<xcb_ge_generic_event_t>();
  if (event.type() != XCB_GE_GENERIC || head.extension != extension_) return std::nullopt;
  // All raw events have one layout, and the type stands at one place in every event.
  const auto& raw = event.as<xcb_input_raw_button_press_event_t>();
  if (raw.event_type == XCB_INPUT_HIERARCHY || isChangeOfDevice(event)) {
    return RawInput{.kind = InputKind::devicesChanged};
  }
  return kindOfRaw(raw.event_type).transform([&](InputKind kind) {
    return RawInput{.kind = kind,
                    .device = raw.sourceid,
                    .stamp = raw.time,
                    .detail = raw.detail,
                    .values = valuesOf(raw)};
  });
}

}  // namespace vesk::capture::x11
