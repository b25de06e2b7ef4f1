#include "editor/TimelineViewport.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "editor/TimelineScale.h"

namespace vesk::editor {
namespace {

/// As wide as what reaches beyond its time: the labels of ticks, handles, focus frames.
constexpr double margin = 120;
/// How much of what came before stays to be seen when a page is turned.
constexpr double keptShare = 0.1;

constexpr double wheelNotch = 120;  ///< in eighths of a degree
constexpr double notchPoints = 60;

/// The part of a turn along the axis in which it goes further.
double longer(QPoint delta) {
  return std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y();
}

}  // namespace

TimelineViewport::TimelineViewport(EditorUIState& ui, QObject* parent) : QObject(parent), ui_(ui) {
  connect(&ui_, &EditorUIState::pxPerSecChanged, this, &TimelineViewport::takeScale);
}

bool TimelineViewport::canZoomIn() const {
  return pxPerSec() < mostPxPerSec;
}

bool TimelineViewport::canZoomOut() const {
  return pxPerSec() > leastPxPerSec;
}

double TimelineViewport::contentWidth() const {
  return xOf(duration_);
}

double TimelineViewport::bounded(double x, double pxPerSec) const {
  const double furthest = std::max(std::ceil(duration_ * pxPerSec - width_), 0.0);
  return std::clamp(x, 0.0, furthest);
}

void TimelineViewport::setContentX(double x) {
  if (!std::isfinite(x)) return;
  const double before = contentX();
  exactX_ = bounded(x, pxPerSec());
  if (contentX() == before) return;
  Q_EMIT contentXChanged();
  Q_EMIT rangeChanged();
}

void TimelineViewport::setWidth(double width) {
  if (!std::isfinite(width) || width == width_) return;
  width_ = std::max(width, 0.0);
  exactX_ = bounded(exactX_, pxPerSec());
  Q_EMIT widthChanged();
  Q_EMIT contentXChanged();
  Q_EMIT rangeChanged();
}

void TimelineViewport::setDuration(double duration) {
  const double length = std::isnan(duration) ? 0 : std::clamp(duration, 0.0, mostSeconds);
  if (length == duration_) return;
  duration_ = length;
  exactX_ = bounded(exactX_, pxPerSec());
  Q_EMIT contentWidthChanged();
  Q_EMIT contentXChanged();
  Q_EMIT rangeChanged();
}

TimeRange TimelineViewport::range() const {
  return {.from = timeAt(contentX() - margin), .to = timeAt(contentX() + width_ + margin)};
}

void TimelineViewport::setScale(double pxPerSec, double x) {
  if (!std::isfinite(pxPerSec * x) || !(pxPerSec > 0) || pxPerSec == ui_.pxPerSec()) return;
  // Scrolled first, for both to be told at once: in between, other rows would be in view.
  exactX_ = bounded(timeAt(x) * pxPerSec - (x - exactX_), pxPerSec);
  ui_.setPxPerSec(pxPerSec);
}

void TimelineViewport::takeScale() {
  exactX_ = bounded(exactX_, pxPerSec());
  Q_EMIT scaleChanged();
  Q_EMIT contentWidthChanged();
  Q_EMIT contentXChanged();
  Q_EMIT rangeChanged();
}

void TimelineViewport::zoomBy(double factor, double anchor) {
  // A short recording may be fitted at more than the most; that is no reason to jump.
  const double most = std::max(pxPerSec(), mostPxPerSec);
  setScale(std::clamp(pxPerSec() * factor, leastPxPerSec, most), exactX_ + anchor);
}

void TimelineViewport::scrollBy(double points) {
  setContentX(exactX_ + points);
}

void TimelineViewport::wheel(QPoint pixels, QPoint angle, bool isZooming, double pointer) {
  if (isZooming) {
    zoomBy(std::pow(zoomStep, longer(angle) / wheelNotch), pointer);
  } else {
    scrollBy(pixels.isNull() ? -longer(angle) * notchPoints / wheelNotch : -longer(pixels));
  }
}

void TimelineViewport::reveal(double x) {
  if (x < contentX()) {
    setContentX(std::floor(x));
  } else if (x > contentX() + width_) {
    setContentX(std::ceil(x - width_));
  }
}

void TimelineViewport::turnPage(double x) {
  const double kept = x < contentX() ? 1 - keptShare : keptShare;
  setContentX(x - kept * width_);
}

}  // namespace vesk::editor
