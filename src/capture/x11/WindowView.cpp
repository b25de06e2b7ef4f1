#include "capture/x11/WindowView.h"

#include <libyuv/scale_argb.h>
#include <xcb/composite.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "capture/x11/MonotonicNow.h"
#include "capture/x11/Pixels.h"
#include "capture/x11/WindowTree.h"

namespace vesk::capture::x11 {
namespace {

void selectStructure(const Connection& connection, std::uint32_t window) {
  constexpr std::uint32_t wanted = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection.get(), window, XCB_CW_EVENT_MASK, &wanted);
}

/// How much smaller a window's picture must be to fit; the pixel that makes a number odd does not
/// count.
double fittingScale(const PixelSize& window, const PixelSize& picture) {
  const auto along = [](int length, int room) {
    return length <= room + 1 ? 1.0 : static_cast<double>(room) / length;
  };
  return std::min(along(window.width, picture.width), along(window.height, picture.height));
}

int scaledLength(int length, double scale, int room) {
  return std::clamp(static_cast<int>(std::lround(length * scale)), 1, room);
}

void scale(const Pixels& source, const Pixels& target) {
  const auto from = source.view();
  const auto to = target.view();
  libyuv::ARGBScale(from.data, static_cast<int>(from.stride), from.width, from.height,
                    reinterpret_cast<std::uint8_t*>(target.data), static_cast<int>(to.stride),
                    to.width, to.height, libyuv::kFilterBox);
}

}  // namespace

std::expected<std::unique_ptr<WindowView>, BackendError> WindowView::open(Connection connection,
                                                                          std::uint32_t window,
                                                                          PixelSize size,
                                                                          double scaleFactor) {
  std::unique_ptr<WindowView> view{
      new WindowView{std::move(connection), window, size, scaleFactor}};
  view->followWindow();
  if (view->frame_ == 0) return std::unexpected(BackendError{"找不到要录制的窗口，它可能已经关闭"});
  return view;
}

WindowView::WindowView(Connection connection, std::uint32_t window, PixelSize size,
                       double scaleFactor)
    : connection_{std::move(connection)},
      window_{window},
      size_{size},
      scaleFactor_{scaleFactor},
      events_{connection_},
      reader_{connection_},
      picture_(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height),
               black) {
  selectStructure(connection_, window_);
}

WindowView::~WindowView() {
  releasePixmap();
}

std::expected<ScreenFrame, ScreenStreamEnd> WindowView::look() {
  takeEvents();
  const PixelRegion drawn = damage_ ? damage_->take() : PixelRegion{};
  takeEvents();
  if (isStale_) followWindow();
  if (!connection_.isAlive()) return std::unexpected(endBecauseOf(ReadFailure::disconnected));

  ScreenFrame frame{.stamp = monotonicNow()};
  bool isNew = std::exchange(isFirst_, false);
  if (pixmap_ != 0 && (isUnread_ || !drawn.isEmpty())) {
    const auto done = read(drawn);
    if (done) {
      isNew = true;
    } else if (done.error() != ReadFailure::unavailable) {
      return std::unexpected(endBecauseOf(done.error()));
    }
  }
  const PixelSize content = placed();
  frame.contentRect = package::Rect{.x = 0,
                                    .y = 0,
                                    .width = content.width / scaleFactor_,
                                    .height = content.height / scaleFactor_};
  if (isNew) {
    frame.status = ScreenFrame::Status::complete;
    frame.pixels = pixels().view();
  }
  return frame;
}

void WindowView::takeEvents() {
  using Kind = ScreenEvent::Kind;
  while (const auto event = events_.next()) {
    if (damage_) damage_->note(*event);
    if (event->kind == Kind::damaged || event->kind == Kind::property) continue;
    isStale_ = true;
    const bool isFrame = event->subject == frame_;
    if (isFrame && (event->kind == Kind::mapped || event->kind == Kind::unmapped)) {
      isUnnamed_ = true;
    }
  }
}

// Of a window that is gone or not shown the picture and its size stay. What counts is the window
// itself: a window manager may go on to show its frame for a while, empty.
void WindowView::followWindow() {
  isStale_ = false;
  const auto frame = toplevelOf(connection_, window_);
  if (!frame) return releasePixmap();
  if (*frame != frame_) followFrame(*frame);

  const auto attributesCookie = xcb_get_window_attributes(connection_.get(), window_);
  const auto geometryCookie = xcb_get_geometry(connection_.get(), frame_);
  const auto attributes =
      owned(xcb_get_window_attributes_reply(connection_.get(), attributesCookie, nullptr));
  const auto geometry = owned(xcb_get_geometry_reply(connection_.get(), geometryCookie, nullptr));
  if (!attributes || !geometry) return releasePixmap();
  const bool isShown = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  if (!isShown) releasePixmap();
  if (!isShown && frameSize_ != PixelSize{}) return;
  const PixelSize size{.width = geometry->width + 2 * geometry->border_width,
                       .height = geometry->height + 2 * geometry->border_width};
  border_ = geometry->border_width;
  if (size != std::exchange(frameSize_, size)) isUnnamed_ = true;
  if (!isShown) return;
  if (isUnnamed_ || pixmap_ == 0) rename();
}

void WindowView::followFrame(std::uint32_t frame) {
  frame_ = frame;
  selectStructure(connection_, frame_);
  damage_ = std::make_unique<DamageWatch>(connection_, frame_);
  isUnnamed_ = true;
}

// The server keeps the old contents under the old name when a window is resized or mapped.
void WindowView::rename() {
  releasePixmap();
  pixmap_ = xcb_generate_id(connection_.get());
  xcb_composite_name_window_pixmap(connection_.get(), frame_, pixmap_);
  isUnnamed_ = false;
  isUnread_ = true;
}

void WindowView::releasePixmap() {
  if (pixmap_ != 0) xcb_free_pixmap(connection_.get(), std::exchange(pixmap_, 0));
}

std::expected<void, ReadFailure> WindowView::read(const PixelRegion& drawn) {
  const PixelSize place = placed();
  const bool isScaled = fittingScale(frameSize_, size_) < 1;
  const media::PixelRect extent =
      isScaled ? media::PixelRect{.width = frameSize_.width, .height = frameSize_.height}
               : media::PixelRect{.width = place.width, .height = place.height};
  const media::PixelRect wanted =
      isUnread_ || isScaled ? extent : overlap(drawn.moved(border_, border_).bounds(), extent);
  if (isEmpty(wanted)) return std::unexpected(ReadFailure::unavailable);

  const std::uint32_t pixmap = pixmap_;
  const auto contents = reader_.read(pixmap, wanted);
  // The window may have been hidden or resized meanwhile, and then this is half of a change.
  takeEvents();
  if (isStale_) followWindow();
  if (!contents) {
    isStale_ = isUnnamed_ = true;
    return std::unexpected(contents.error());
  }
  if (pixmap_ != pixmap) return std::unexpected(ReadFailure::unavailable);
  makeOpaque(*contents);
  if (std::exchange(isUnread_, false)) fill(pixels(), black);
  if (isScaled) {
    scale(*contents, part(pixels(), {.width = place.width, .height = place.height}));
  } else {
    copy(*contents, part(pixels(), wanted));
  }
  return {};
}

/// The size that the window has in the picture.
PixelSize WindowView::placed() const {
  const double scale = fittingScale(frameSize_, size_);
  return {.width = scaledLength(frameSize_.width, scale, size_.width),
          .height = scaledLength(frameSize_.height, scale, size_.height)};
}

Pixels WindowView::pixels() {
  return {
      .data = picture_.data(), .stride = size_.width, .width = size_.width, .height = size_.height};
}

}  // namespace vesk::capture::x11
