#include "capture/x11/X11ScreenSource.h"

#include <xcb/composite.h>
#include <xcb/xcb.h>

#include <utility>
#include <variant>

#include "capture/x11/AreaView.h"
#include "capture/x11/ScreenConnection.h"
#include "capture/x11/ScreenStream.h"
#include "capture/x11/WindowView.h"

namespace vesk::capture::x11 {
namespace {

using View = std::expected<std::unique_ptr<ScreenView>, BackendError>;

template <typename T>
View asView(std::expected<std::unique_ptr<T>, BackendError> view) {
  if (!view) return std::unexpected(std::move(view.error()));
  return std::move(*view);
}

}  // namespace

/// Every window on the screen draws into memory of its own for as long as this lives.
struct X11ScreenSource::Redirection {
  explicit Redirection(Connection theConnection)
      : connection{std::move(theConnection)},
        background{std::make_shared<KeptBackground>(connection.screen().width_in_pixels,
                                                    connection.screen().height_in_pixels)} {
    const auto cookie = xcb_composite_redirect_subwindows_checked(
        connection.get(), connection.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    // Waits until it is done, since the streams ask through connections of their own.
    owned(xcb_request_check(connection.get(), cookie));
  }

  Connection connection;
  std::shared_ptr<KeptBackground> background;
};

std::expected<std::unique_ptr<X11ScreenSource>, BackendError> X11ScreenSource::open(
    const std::string& display) {
  auto connection = openScreenConnection(display);
  if (!connection) return std::unexpected(std::move(connection.error()));
  auto redirection = std::make_shared<Redirection>(std::move(*connection));

  // A look at the whole screen is how the background gets to be known.
  auto glance = openScreenConnection(display);
  if (!glance) return std::unexpected(std::move(glance.error()));
  const PixelSize size{.width = glance->screen().width_in_pixels,
                       .height = glance->screen().height_in_pixels};
  auto view = AreaView::open(std::move(*glance), redirection->background, {}, size);
  if (!view) return std::unexpected(std::move(view.error()));
  if (const auto seen = (*view)->look(); !seen) {
    return std::unexpected(BackendError{seen.error().message});
  }
  return std::unique_ptr<X11ScreenSource>{new X11ScreenSource{display, std::move(redirection)}};
}

X11ScreenSource::X11ScreenSource(std::string display, std::shared_ptr<Redirection> redirection)
    : display_{std::move(display)}, redirection_{std::move(redirection)} {}

X11ScreenSource::~X11ScreenSource() = default;

std::expected<std::unique_ptr<Listening>, BackendError> X11ScreenSource::stream(
    const ScreenRequest& request, OnFrame onFrame, OnEnd onEnd) {
  if (request.size.width <= 0 || request.size.height <= 0) {
    return std::unexpected(BackendError{"录制区域的大小无效"});
  }
  auto connection = openScreenConnection(display_);
  if (!connection) return std::unexpected(std::move(connection.error()));
  const auto* const area = std::get_if<ScreenRequest::Area>(&request.subject);
  View view = area ? asView(AreaView::open(std::move(*connection), redirection_->background,
                                           area->rect, request.size))
                   : asView(WindowView::open(std::move(*connection),
                                             std::get<ScreenRequest::Window>(request.subject).id,
                                             request.size, request.scaleFactor));
  if (!view) return std::unexpected(std::move(view.error()));
  return std::make_unique<ScreenStream>(std::move(*view), redirection_, request.fps,
                                        std::move(onFrame), std::move(onEnd));
}

}  // namespace vesk::capture::x11
