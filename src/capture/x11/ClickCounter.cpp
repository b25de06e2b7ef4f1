#include "capture/x11/ClickCounter.h"

#include <cmath>

namespace vesk::capture::x11 {

std::int64_t ClickCounter::press(Button button, double time, const ScreenPoint& at) {
  const Press press{.button = button, .time = time, .at = at};
  count_ = continues(press) ? count_ + 1 : 1;
  last_ = press;
  return count_;
}

bool ClickCounter::continues(const Press& press) const {
  return last_ && press.button == last_->button && press.time - last_->time <= limits_.interval &&
         std::abs(press.at.x - last_->at.x) <= limits_.distance &&
         std::abs(press.at.y - last_->at.y) <= limits_.distance;
}

}  // namespace vesk::capture::x11
