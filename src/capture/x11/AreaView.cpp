#include "capture/x11/AreaView.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "capture/x11/MonotonicNow.h"

namespace vesk::capture::x11 {

std::expected<std::unique_ptr<AreaView>, BackendError> AreaView::open(
    Connection connection, std::shared_ptr<KeptBackground> background, const package::Rect& rect,
    PixelSize size) {
  std::unique_ptr<AreaView> view{new AreaView{std::move(connection), std::move(background)}};
  auto picture = AreaPicture::create(view->connection_, {.x = static_cast<int>(std::lround(rect.x)),
                                                         .y = static_cast<int>(std::lround(rect.y)),
                                                         .width = size.width,
                                                         .height = size.height});
  if (!picture) return std::unexpected(BackendError{endBecauseOf(picture.error()).message});
  view->picture_.emplace(std::move(*picture));
  return view;
}

AreaView::AreaView(Connection connection, std::shared_ptr<KeptBackground> background)
    : connection_{std::move(connection)},
      background_{std::move(background)},
      events_{connection_},
      stack_{connection_},
      damage_{connection_, connection_.root()},
      patch_{connection_, *background_} {}

// The order matters. An answer of the server comes after all events that preceded it: what the
// damage tells of is judged by windows that are no older than it.
std::expected<ScreenFrame, ScreenStreamEnd> AreaView::look() {
  takeEvents();
  const PixelRegion damaged = damage_.take();
  takeEvents();
  const bool hasNewEdges = findScreenEdges();
  const PixelRegion hiddenBefore = patch_.region();
  followWindows();
  patch_.takeDamage();
  if (!connection_.isAlive()) return std::unexpected(endBecauseOf(ReadFailure::disconnected));

  if (!areEqual(hiddenBefore, patch_.region())) doubtChange(hiddenBefore);
  const PixelRegion damagedHere = damaged.within(shown_);
  const PixelRegion doubtful = takeDoubt();
  const PixelRegion drawn = without(damagedHere, doubtful);
  unread_.add(without(damagedHere, patch_.region()));
  const bool isRedrawn = std::exchange(isFirst_, false) || hasNewEdges || !drawn.isEmpty();
  const media::HostTime stamp = monotonicNow();
  if (!isRedrawn && unread_.isEmpty() && !patch_.isStale()) {
    return frame(ScreenFrame::Status::idle, stamp);
  }

  // There the pixels tell: a window of our own that comes or goes changes nothing in the picture.
  const auto before = isRedrawn ? std::vector<Memory>{} : remember(doubtful);
  const auto done = read();
  if (!done && done.error() != ReadFailure::unavailable) {
    return std::unexpected(endBecauseOf(done.error()));
  }
  const bool isNew = isRedrawn || std::ranges::any_of(before, [&](const Memory& memory) {
                       return differs(memory);
                     });
  return frame(isNew ? ScreenFrame::Status::complete : ScreenFrame::Status::idle, stamp);
}

/// Where a window of our own was, the server draws what was beneath it some time later.
void AreaView::doubtChange(const PixelRegion& hiddenBefore) {
  constexpr int longestDelay = 30;  // looks
  const PixelRegion uncovered = without(hiddenBefore, patch_.region()).within(shown_);
  uncovered_.add(uncovered);
  unread_.add(uncovered);
  uncoveredFor_ = longestDelay;
}

/// Where damage does not tell that something in the picture is new: under windows of our own, and
/// where they were lately.
PixelRegion AreaView::takeDoubt() {
  if (uncoveredFor_ == 0) uncovered_ = {};
  uncoveredFor_ = std::max(0, uncoveredFor_ - 1);
  PixelRegion doubtful = patch_.region();
  doubtful.add(uncovered_.within(shown_));
  return doubtful;
}

void AreaView::takeEvents() {
  while (const auto event = events_.next()) {
    damage_.note(*event);
    stack_.note(*event);
    patch_.note(*event);
    const bool isScreen = event->subject == connection_.root();
    if (isScreen && event->kind == ScreenEvent::Kind::restacked) isScreenResized_ = true;
  }
}

/// Whether another part of the area is on the screen now.
bool AreaView::findScreenEdges() {
  if (!std::exchange(isScreenResized_, false)) return false;
  const auto screen = owned(xcb_get_geometry_reply(
      connection_.get(), xcb_get_geometry(connection_.get(), connection_.root()), nullptr));
  if (!screen) return false;
  const media::PixelRect shown =
      overlap(picture_->area(), {.x = 0, .y = 0, .width = screen->width, .height = screen->height});
  if (shown == std::exchange(shown_, shown)) return false;
  picture_->clear();
  unread_ = PixelRegion{shown_};
  patch_.follow(stack_.windows(), stack_.ownRegion().within(shown_));
  return true;
}

void AreaView::followWindows() {
  if (stack_.refresh()) patch_.follow(stack_.windows(), stack_.ownRegion().within(shown_));
}

// A window of our own that came while the picture was read may be in it, so it is read again.
std::expected<void, ReadFailure> AreaView::read() {
  constexpr int mostAttempts = 4;
  for (int attempt = 0; attempt < mostAttempts; ++attempt) {
    if (!unread_.isEmpty()) {
      if (const auto done = picture_->read(unread_.bounds()); !done) return done;
    }
    if (patch_.isStale()) {
      if (const auto done = patch_.refresh(); !done) return done;
    }
    patch_.paint(picture_->pixels(), picture_->area());
    takeEvents();
    const PixelRegion hidden = patch_.region();
    followWindows();
    if (areEqual(hidden, patch_.region())) break;
    unread_.add(without(hidden, patch_.region()).within(shown_));
  }
  background_->learn(without(unread_, stack_.coveredRegion()), picture_->pixels(),
                     picture_->area());
  unread_ = {};
  return {};
}

std::vector<AreaView::Memory> AreaView::remember(const PixelRegion& region) const {
  std::vector<Memory> memories;
  for (const media::PixelRect& rect : region.rects()) {
    const media::PixelRect place = moved(rect, -picture_->area().x, -picture_->area().y);
    Memory memory{.place = place, .pixels = {}};
    for (int y = 0; y < place.height; ++y) {
      const std::uint32_t* const row = picture_->pixels().row(place.y + y) + place.x;
      memory.pixels.insert(memory.pixels.end(), row, row + place.width);
    }
    memories.push_back(std::move(memory));
  }
  return memories;
}

bool AreaView::differs(const Memory& memory) const {
  const Pixels now = part(picture_->pixels(), memory.place);
  const auto* before = memory.pixels.data();
  for (int y = 0; y < now.height; ++y, before += now.width) {
    if (!std::equal(before, before + now.width, now.row(y))) return true;
  }
  return false;
}

ScreenFrame AreaView::frame(ScreenFrame::Status status, media::HostTime stamp) const {
  const auto& area = picture_->area();
  ScreenFrame frame{.status = status,
                    .stamp = stamp,
                    .contentRect = package::Rect{.x = 0,
                                                 .y = 0,
                                                 .width = static_cast<double>(area.width),
                                                 .height = static_cast<double>(area.height)}};
  if (status == ScreenFrame::Status::complete) frame.pixels = picture_->pixels().view();
  return frame;
}

}  // namespace vesk::capture::x11
