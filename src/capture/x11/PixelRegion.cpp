#include "capture/x11/PixelRegion.h"

#include <algorithm>

namespace vesk::capture::x11 {
namespace {

using media::PixelRect;

int right(const PixelRect& rect) {
  return rect.x + rect.width;
}

int bottom(const PixelRect& rect) {
  return rect.y + rect.height;
}

PixelRect between(int left, int top, int rightEdge, int bottomEdge) {
  return {.x = left,
          .y = top,
          .width = std::max(0, rightEdge - left),
          .height = std::max(0, bottomEdge - top)};
}

}  // namespace

PixelRect overlap(const PixelRect& a, const PixelRect& b) {
  return between(std::max(a.x, b.x), std::max(a.y, b.y), std::min(right(a), right(b)),
                 std::min(bottom(a), bottom(b)));
}

bool isEmpty(const PixelRect& rect) {
  return rect.width <= 0 || rect.height <= 0;
}

PixelRect moved(PixelRect rect, int dx, int dy) {
  rect.x += dx;
  rect.y += dy;
  return rect;
}

PixelRect PixelRegion::bounds() const {
  if (rects_.empty()) return {};
  PixelRect all = rects_.front();
  for (const PixelRect& rect : rects_) {
    all = between(std::min(all.x, rect.x), std::min(all.y, rect.y),
                  std::max(right(all), right(rect)), std::max(bottom(all), bottom(rect)));
  }
  return all;
}

void PixelRegion::add(const PixelRect& rect) {
  if (x11::isEmpty(rect)) return;
  subtract(rect);
  rects_.push_back(rect);
}

void PixelRegion::add(const PixelRegion& other) {
  for (const PixelRect& rect : other.rects_) add(rect);
}

// Of each rectangle up to four stay: above, below, and to the left and right of what is taken away.
void PixelRegion::subtract(const PixelRect& rect) {
  std::vector<PixelRect> rest;
  const auto keep = [&](const PixelRect& part) {
    if (!x11::isEmpty(part)) rest.push_back(part);
  };
  for (const PixelRect& each : rects_) {
    const PixelRect hole = overlap(each, rect);
    if (x11::isEmpty(hole)) {
      rest.push_back(each);
      continue;
    }
    keep(between(each.x, each.y, right(each), hole.y));
    keep(between(each.x, bottom(hole), right(each), bottom(each)));
    keep(between(each.x, hole.y, hole.x, bottom(hole)));
    keep(between(right(hole), hole.y, right(each), bottom(hole)));
  }
  rects_ = std::move(rest);
}

void PixelRegion::subtract(const PixelRegion& other) {
  for (const PixelRect& rect : other.rects_) subtract(rect);
}

PixelRegion PixelRegion::within(const PixelRect& rect) const {
  PixelRegion result;
  for (const PixelRect& each : rects_) {
    const PixelRect part = overlap(each, rect);
    if (!x11::isEmpty(part)) result.rects_.push_back(part);
  }
  return result;
}

PixelRegion PixelRegion::within(const PixelRegion& other) const {
  PixelRegion result;
  for (const PixelRect& rect : other.rects_) {
    const PixelRegion part = within(rect);
    result.rects_.insert(result.rects_.end(), part.rects_.begin(), part.rects_.end());
  }
  return result;
}

PixelRegion PixelRegion::moved(int dx, int dy) const {
  PixelRegion result;
  for (const PixelRect& rect : rects_) result.rects_.push_back(x11::moved(rect, dx, dy));
  return result;
}

PixelRegion without(PixelRegion from, const PixelRegion& what) {
  from.subtract(what);
  return from;
}

bool areEqual(const PixelRegion& a, const PixelRegion& b) {
  return without(a, b).isEmpty() && without(b, a).isEmpty();
}

}  // namespace vesk::capture::x11
