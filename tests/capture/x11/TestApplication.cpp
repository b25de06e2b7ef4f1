#include "capture/x11/TestApplication.h"

#include <xcb/xcb.h>

#include <array>
#include <utility>

namespace vesk::capture::x11::test {
namespace {

constexpr std::uint32_t userPosition = 1;  // in the hints for the window manager
constexpr std::uint32_t userSize = 2;

std::uint32_t number(double value) {
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(value));
}

}  // namespace

TestApplication::TestApplication(const std::string& display, std::string name)
    : connection_{Connection::open(display).value()}, name_{std::move(name)} {}

std::uint32_t TestApplication::create(const package::Rect& rect) const {
  const auto window = xcb_generate_id(connection_.get());
  xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window, connection_.root(),
                    static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
                    static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height),
                    0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
  const std::array<std::uint32_t, 18> hints{userPosition | userSize, number(rect.x), number(rect.y),
                                            number(rect.width), number(rect.height)};
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                      XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
  if (!name_.empty()) {
    setText(window, "WM_CLASS", std::string{"window"} + '\0' + name_ + '\0');
  }
  sync();
  return window;
}

std::uint32_t TestApplication::open(const package::Rect& rect, const std::string& title) const {
  const auto window = create(rect);
  setText(window, "_NET_WM_NAME", title);
  map(window);
  return window;
}

void TestApplication::map(std::uint32_t window) const {
  xcb_map_window(connection_.get(), window);
  sync();
}

void TestApplication::unmap(std::uint32_t window) const {
  xcb_unmap_window(connection_.get(), window);
  sync();
}

void TestApplication::setText(std::uint32_t window, std::string_view property,
                              std::string_view text) const {
  const auto type = property.starts_with("_NET") ? connection_.atom("UTF8_STRING")
                                                 : std::uint32_t{XCB_ATOM_STRING};
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, connection_.atom(property),
                      type, 8, static_cast<std::uint32_t>(text.size()), text.data());
  sync();
}

void TestApplication::setType(std::uint32_t window, std::string_view type) const {
  const auto atom = connection_.atom(type);
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window,
                      connection_.atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1, &atom);
  sync();
}

void TestApplication::setNumber(std::uint32_t window, std::string_view property,
                                std::uint32_t value) const {
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, connection_.atom(property),
                      XCB_ATOM_CARDINAL, 32, 1, &value);
  sync();
}

void TestApplication::move(std::uint32_t window, double x, double y) const {
  const std::array values{number(x), number(y)};
  xcb_configure_window(connection_.get(), window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                       values.data());
  sync();
}

void TestApplication::resize(std::uint32_t window, double width, double height) const {
  const std::array values{number(width), number(height)};
  xcb_configure_window(connection_.get(), window,
                       XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values.data());
  sync();
}

package::Rect TestApplication::geometry(std::uint32_t window) const {
  const auto reply = owned(xcb_get_geometry_reply(
      connection_.get(), xcb_get_geometry(connection_.get(), window), nullptr));
  if (!reply) return {};
  return {.x = static_cast<double>(reply->x),
          .y = static_cast<double>(reply->y),
          .width = static_cast<double>(reply->width),
          .height = static_cast<double>(reply->height)};
}

void TestApplication::close(std::uint32_t window) const {
  xcb_destroy_window(connection_.get(), window);
  sync();
}

void TestApplication::activate(std::uint32_t window) const {
  constexpr std::uint32_t fromPager = 2;
  xcb_client_message_event_t message{.response_type = XCB_CLIENT_MESSAGE,
                                     .format = 32,
                                     .window = window,
                                     .type = connection_.atom("_NET_ACTIVE_WINDOW")};
  message.data.data32[0] = fromPager;
  xcb_send_event(connection_.get(), 0, connection_.root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 static_cast<const char*>(static_cast<const void*>(&message)));
  sync();
}

void TestApplication::sync() const {
  owned(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()),
                                  nullptr));
}

}  // namespace vesk::capture::x11::test
