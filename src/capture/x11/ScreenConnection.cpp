#include "capture/x11/ScreenConnection.h"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <span>

namespace vesk::capture::x11 {
namespace {

bool hasExtensions(const Connection& connection) {
  const std::array needed{&xcb_composite_id, &xcb_damage_id, &xcb_xfixes_id};
  return std::ranges::all_of(needed, [&](xcb_extension_t* extension) {
    const auto* const data = xcb_get_extension_data(connection.get(), extension);
    return data && data->present != 0;
  });
}

/// The server answers the other requests of an extension only to those who have named the version
/// that they know.
bool nameVersions(const Connection& connection) {
  auto* const xcb = connection.get();
  const auto composite = xcb_composite_query_version(xcb, 0, 4);
  const auto damage = xcb_damage_query_version(xcb, 1, 1);
  const auto xfixes = xcb_xfixes_query_version(xcb, 5, 0);
  const auto compositeReply = owned(xcb_composite_query_version_reply(xcb, composite, nullptr));
  const auto damageReply = owned(xcb_damage_query_version_reply(xcb, damage, nullptr));
  const auto xfixesReply = owned(xcb_xfixes_query_version_reply(xcb, xfixes, nullptr));
  return compositeReply && damageReply && xfixesReply;
}

const xcb_visualtype_t* rootVisual(const xcb_screen_t& screen) {
  for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0;
       xcb_depth_next(&depth)) {
    for (auto visual = xcb_depth_visuals_iterator(depth.data); visual.rem > 0;
         xcb_visualtype_next(&visual)) {
      if (visual.data->visual_id == screen.root_visual) return visual.data;
    }
  }
  return nullptr;
}

bool hasUsablePixels(const Connection& connection) {
  const auto* const setup = xcb_get_setup(connection.get());
  const auto& screen = connection.screen();
  const std::span formats{xcb_setup_pixmap_formats(setup),
                          static_cast<std::size_t>(xcb_setup_pixmap_formats_length(setup))};
  const bool hasFourBytes = std::ranges::any_of(formats, [&](const xcb_format_t& format) {
    return format.depth == screen.root_depth && format.bits_per_pixel == 32;
  });
  const auto* const visual = rootVisual(screen);
  return hasFourBytes && setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST &&
         visual != nullptr && visual->red_mask == 0xFF0000 && visual->green_mask == 0xFF00 &&
         visual->blue_mask == 0xFF;
}

}  // namespace

std::expected<Connection, BackendError> openScreenConnection(const std::string& display) {
  auto connection = Connection::open(display);
  if (!connection) return connection;
  if (!hasExtensions(*connection) || !nameVersions(*connection)) {
    return std::unexpected(BackendError{"显示服务器缺少 Composite、DAMAGE 或 XFIXES 扩展"});
  }
  if (!hasUsablePixels(*connection)) {
    return std::unexpected(BackendError{"显示器的像素格式不受支持，需要每像素 24 位色"});
  }
  return connection;
}

}  // namespace vesk::capture::x11
