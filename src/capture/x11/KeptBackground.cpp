#include "capture/x11/KeptBackground.h"

namespace vesk::capture::x11 {
KeptBackground::KeptBackground(int width, int height)
    : extent_{.x = 0, .y = 0, .width = width, .height = height},
      pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), black) {}

void KeptBackground::learn(const PixelRegion& bare, const Pixels& picture,
                           const media::PixelRect& origin) {
  const std::scoped_lock lock{mutex_};
  const Pixels kept = whole();
  const PixelRegion seen = bare.within(extent_).within(origin);
  for (const media::PixelRect& rect : seen.rects()) {
    copy(part(picture, moved(rect, -origin.x, -origin.y)), part(kept, rect));
  }
}

void KeptBackground::paint(const Pixels& target, int x, int y) {
  const std::scoped_lock lock{mutex_};
  const media::PixelRect wanted{.x = x, .y = y, .width = target.width, .height = target.height};
  const media::PixelRect known = overlap(wanted, extent_);
  if (known != wanted) fill(target, black);
  if (isEmpty(known)) return;
  copy(part(whole(), known), part(target, moved(known, -x, -y)));
}

Pixels KeptBackground::whole() {
  return {.data = pixels_.data(),
          .stride = extent_.width,
          .width = extent_.width,
          .height = extent_.height};
}

}  // namespace vesk::capture::x11
