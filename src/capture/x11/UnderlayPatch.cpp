#include "capture/x11/UnderlayPatch.h"

#include <xcb/composite.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <ranges>
#include <utility>

namespace vesk::capture::x11 {

Pixels UnderlayPatch::Tile::view() {
  return {.data = pixels.data(), .stride = rect.width, .width = rect.width, .height = rect.height};
}

UnderlayPatch::UnderlayPatch(const Connection& connection, KeptBackground& background)
    : connection_{connection},
      background_{background},
      reader_{connection},
      backgroundName_{connection.atom("_XROOTPMAP_ID")} {}

// From the top down, so that of each window only what is not hidden by one above it is read.
void UnderlayPatch::follow(const std::vector<StackedWindow>& windows, const PixelRegion& region) {
  region_ = region;
  layers_.clear();
  tiles_.clear();
  bare_ = region;
  for (const StackedWindow& window : windows | std::views::reverse) {
    if (window.isOwn || bare_.within(window.frame).isEmpty()) continue;
    PixelRegion visible = bare_.within(shapeOf(window));
    if (visible.isEmpty()) continue;
    if (!window.isBlended) bare_.subtract(visible);
    layers_.push_back({.window = window, .visible = std::move(visible)});
  }
  std::ranges::reverse(layers_);
  for (const media::PixelRect& rect : region_.rects()) {
    const auto count = static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height);
    tiles_.push_back({.rect = rect, .pixels = std::vector<std::uint32_t>(count)});
  }
  watchLayers();
  isStale_ = true;
}

/// Where a window is, on the screen; some are no rectangles.
PixelRegion UnderlayPatch::shapeOf(const StackedWindow& window) const {
  const std::uint32_t region = xcb_generate_id(connection_.get());
  xcb_xfixes_create_region_from_window(connection_.get(), region, window.id, XCB_SHAPE_SK_BOUNDING);
  const PixelRegion shape = fetchRegion(connection_, region);
  xcb_xfixes_destroy_region(connection_.get(), region);
  return shape.moved(window.frame.x + window.border, window.frame.y + window.border)
      .within(window.frame);
}

void UnderlayPatch::watchLayers() {
  std::map<std::uint32_t, std::unique_ptr<DamageWatch>> watches;
  for (const Layer& layer : layers_) {
    auto known = watches_.extract(layer.window.id);
    if (known) {
      watches.insert(std::move(known));
    } else {
      watches[layer.window.id] = std::make_unique<DamageWatch>(connection_, layer.window.id);
    }
  }
  watches_ = std::move(watches);
}

void UnderlayPatch::note(const ScreenEvent& event) {
  for (const auto& [window, watch] : watches_) watch->note(event);
  const bool isBackground = event.kind == ScreenEvent::Kind::property &&
                            event.subject == connection_.root() && event.atom == backgroundName_;
  if (isBackground) isStale_ = true;
}

void UnderlayPatch::takeDamage() {
  for (const Layer& layer : layers_) {
    const auto& frame = layer.window.frame;
    const int border = layer.window.border;
    const PixelRegion drawn =
        watches_.at(layer.window.id)->take().moved(frame.x + border, frame.y + border);
    if (!drawn.within(layer.visible).isEmpty()) isStale_ = true;
  }
}

std::expected<void, ReadFailure> UnderlayPatch::refresh() {
  isStale_ = false;
  if (const auto drawn = drawBackground(); !drawn) return drawn;
  for (const Layer& layer : layers_) {
    if (const auto drawn = drawLayer(layer); !drawn) return drawn;
  }
  return {};
}

/// Calls with each tile's part of a rectangle, and where in the rectangle it begins.
template <typename Draw>
void UnderlayPatch::intoTiles(const media::PixelRect& rect, Draw draw) {
  for (Tile& tile : tiles_) {
    const media::PixelRect shared = overlap(rect, tile.rect);
    if (isEmpty(shared)) continue;
    draw(part(tile.view(), moved(shared, -tile.rect.x, -tile.rect.y)),
         moved(shared, -rect.x, -rect.y));
  }
}

std::expected<void, ReadFailure> UnderlayPatch::drawBackground() {
  if (bare_.isEmpty()) return {};
  const auto pixmap = connection_.number(connection_.root(), backgroundName_);
  for (const media::PixelRect& rect : bare_.rects()) {
    if (pixmap) {
      const auto drawn = drawBackgroundPicture(*pixmap, rect);
      if (drawn) continue;
      if (drawn.error() != ReadFailure::unavailable) return drawn;
    }
    intoTiles(rect, [&](const Pixels& target, const media::PixelRect& from) {
      background_.paint(target, rect.x + from.x, rect.y + from.y);
    });
  }
  return {};
}

/// A pixmap that is smaller than the screen is not used: what it shows depends on who drew it.
std::expected<void, ReadFailure> UnderlayPatch::drawBackgroundPicture(
    std::uint32_t pixmap, const media::PixelRect& rect) {
  const auto pixels = reader_.read(pixmap, rect);
  if (!pixels) return std::unexpected(pixels.error());
  intoTiles(rect, [&](const Pixels& target, const media::PixelRect& from) {
    copy(part(*pixels, from), target);
  });
  return {};
}

/// A window that has just gone leaves what was there; the change of the stack comes soon.
std::expected<void, ReadFailure> UnderlayPatch::drawLayer(const Layer& layer) {
  const std::uint32_t pixmap = xcb_generate_id(connection_.get());
  xcb_composite_name_window_pixmap(connection_.get(), layer.window.id, pixmap);
  std::expected<void, ReadFailure> result;
  for (const media::PixelRect& rect : layer.visible.rects()) {
    const auto pixels =
        reader_.read(pixmap, moved(rect, -layer.window.frame.x, -layer.window.frame.y));
    if (!pixels) {
      if (pixels.error() != ReadFailure::unavailable) result = std::unexpected(pixels.error());
      break;
    }
    const auto draw = layer.window.isBlended ? blend : copy;
    intoTiles(rect, [&](const Pixels& target, const media::PixelRect& from) {
      draw(part(*pixels, from), target);
    });
  }
  xcb_free_pixmap(connection_.get(), pixmap);
  return result;
}

void UnderlayPatch::paint(const Pixels& picture, const media::PixelRect& origin) {
  for (Tile& tile : tiles_) {
    const Pixels target = part(picture, moved(tile.rect, -origin.x, -origin.y));
    copy(tile.view(), target);
    makeOpaque(target);
  }
}

}  // namespace vesk::capture::x11
