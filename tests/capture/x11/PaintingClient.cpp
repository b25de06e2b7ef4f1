#include "capture/x11/PaintingClient.h"

#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace vesk::capture::x11::test {
namespace {

constexpr std::uint32_t iconicState = 3;

/// The server asks the socket who connected it, so a child does, whose socket is ours as well.
int connectAsAnotherProcess(const std::string& display) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  const std::string path = "/tmp/.X11-unix/X" + display.substr(1);
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const pid_t child = ::fork();
  if (child == 0) {
    const auto* const target = reinterpret_cast<const sockaddr*>(&address);
    ::_exit(::connect(socket, target, sizeof address) == 0 ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (status != 0) throw std::runtime_error("cannot connect to " + path);
  return socket;
}

xcb_connection_t* connected(const std::string& display, PaintingClient::Process process) {
  if (process == PaintingClient::Process::own) return xcb_connect(display.c_str(), nullptr);
  return xcb_connect_to_fd(connectAsAnotherProcess(display), nullptr);
}

xcb_rectangle_t rectangle(const media::PixelRect& rect) {
  return {.x = static_cast<std::int16_t>(rect.x),
          .y = static_cast<std::int16_t>(rect.y),
          .width = static_cast<std::uint16_t>(rect.width),
          .height = static_cast<std::uint16_t>(rect.height)};
}

const xcb_screen_t& screenOf(xcb_connection_t* connection) {
  return *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
}

std::uint32_t visualOfDepth(const xcb_screen_t& screen, int depth) {
  for (auto each = xcb_screen_allowed_depths_iterator(&screen); each.rem > 0;
       xcb_depth_next(&each)) {
    if (each.data->depth == depth) return xcb_depth_visuals(each.data)->visual_id;
  }
  throw std::runtime_error(fmt::format("no visual of depth {}", depth));
}

void fillRectangle(xcb_connection_t* connection, std::uint32_t drawable,
                   const media::PixelRect& rect, std::uint32_t colour) {
  const std::uint32_t context = xcb_generate_id(connection);
  xcb_create_gc(connection, context, drawable, XCB_GC_FOREGROUND, &colour);
  const auto area = rectangle(rect);
  xcb_poly_fill_rectangle(connection, drawable, context, 1, &area);
  xcb_free_gc(connection, context);
}

std::uint32_t atom(xcb_connection_t* connection, std::string_view name) {
  const auto cookie =
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : 0;
}

}  // namespace

PaintingClient::PaintingClient(const std::string& display, Process process)
    : connection_{connected(display, process)} {
  if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no connection");
}

PaintingClient::~PaintingClient() {
  xcb_disconnect(connection_);
}

std::uint32_t PaintingClient::open(const media::PixelRect& rect, std::uint32_t colour,
                                   const Look& look) {
  const auto& screen = screenOf(connection_);
  return create(rect, colour, look, screen.root_depth, screen.root_visual, screen.default_colormap);
}

std::uint32_t PaintingClient::openBlended(const media::PixelRect& rect, std::uint32_t colour) {
  const std::uint32_t visual = visualOfDepth(screenOf(connection_), 32);
  const std::uint32_t colourMap = xcb_generate_id(connection_);
  xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colourMap, root(), visual);
  return create(rect, colour, {}, 32, visual, colourMap);
}

std::uint32_t PaintingClient::create(const media::PixelRect& rect, std::uint32_t colour,
                                     const Look& look, std::uint8_t depth, std::uint32_t visual,
                                     std::uint32_t colourMap) {
  const std::uint32_t window = xcb_generate_id(connection_);
  const auto place = rectangle(rect);
  const std::array<std::uint32_t, 4> values{colour, colour, look.isManaged ? 0U : 1U, colourMap};
  xcb_create_window(
      connection_, depth, window, root(), place.x, place.y, place.width, place.height, look.border,
      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
      values.data());
  xcb_map_window(connection_, window);
  sync();
  return window;
}

void PaintingClient::draw(std::uint32_t window, const media::PixelRect& rect,
                          std::uint32_t colour) const {
  fillRectangle(connection_, window, rect, colour);
  sync();
}

void PaintingClient::setBackground(std::uint32_t colour) const {
  xcb_change_window_attributes(connection_, root(), XCB_CW_BACK_PIXEL, &colour);
  xcb_clear_area(connection_, 0, root(), 0, 0, 0, 0);
  sync();
}

void PaintingClient::drawOnScreen(const media::PixelRect& rect, std::uint32_t colour) const {
  draw(root(), rect, colour);
}

void PaintingClient::place(std::uint32_t window, const media::PixelRect& rect) const {
  const std::array values{static_cast<std::uint32_t>(rect.x), static_cast<std::uint32_t>(rect.y),
                          static_cast<std::uint32_t>(rect.width),
                          static_cast<std::uint32_t>(rect.height)};
  xcb_configure_window(connection_, window,
                       XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                           XCB_CONFIG_WINDOW_HEIGHT,
                       values.data());
  sync();
}

void PaintingClient::raise(std::uint32_t window) const {
  constexpr std::uint32_t above = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  sync();
}

void PaintingClient::show(std::uint32_t window) const {
  xcb_map_window(connection_, window);
  sync();
}

void PaintingClient::hide(std::uint32_t window) const {
  xcb_unmap_window(connection_, window);
  sync();
}

void PaintingClient::close(std::uint32_t window) const {
  xcb_destroy_window(connection_, window);
  sync();
}

void PaintingClient::shape(std::uint32_t window, const media::PixelRect& rect) const {
  const auto area = rectangle(rect);
  xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                       XCB_CLIP_ORDERING_UNSORTED, window, 0, 0, 1, &area);
  sync();
}

void PaintingClient::iconify(std::uint32_t window) const {
  const xcb_client_message_event_t message{.response_type = XCB_CLIENT_MESSAGE,
                                           .format = 32,
                                           .window = window,
                                           .type = atom(connection_, "WM_CHANGE_STATE"),
                                           .data = {.data32 = {iconicState, 0, 0, 0, 0}}};
  xcb_send_event(connection_, 0, root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&message));
  sync();
}

void PaintingClient::setWallpaper(std::uint32_t colour) const {
  const auto& screen = screenOf(connection_);
  const std::uint32_t pixmap = xcb_generate_id(connection_);
  xcb_create_pixmap(connection_, screen.root_depth, pixmap, root(), screen.width_in_pixels,
                    screen.height_in_pixels);
  fillRectangle(connection_, pixmap,
                {.width = screen.width_in_pixels, .height = screen.height_in_pixels}, colour);
  xcb_change_window_attributes(connection_, root(), XCB_CW_BACK_PIXMAP, &pixmap);
  xcb_clear_area(connection_, 0, root(), 0, 0, 0, 0);
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, root(),
                      atom(connection_, "_XROOTPMAP_ID"), XCB_ATOM_PIXMAP, 32, 1, &pixmap);
  sync();
}

std::uint32_t PaintingClient::root() const {
  return screenOf(connection_).root;
}

void PaintingClient::sync() const {
  owned(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace vesk::capture::x11::test
