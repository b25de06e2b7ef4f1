#include "capture/x11/KeyRepeat.h"

namespace vesk::capture::x11 {

void KeyRepeat::press(XKeyCode key, double time, const std::optional<RepeatRate>& rate) {
  if (!rate) return;
  held_ = Held{.next = {.key = key, .time = time + rate->delay}, .interval = rate->interval};
}

void KeyRepeat::release(XKeyCode key) {
  if (held_ && held_->next.key == key) held_.reset();
}

std::optional<double> KeyRepeat::due() const {
  if (!held_) return std::nullopt;
  return held_->next.time;
}

std::optional<KeyRepeat::Repeat> KeyRepeat::next(double now) {
  if (!held_ || held_->next.time > now) return std::nullopt;
  const Repeat repeat = held_->next;
  held_->next.time += held_->interval;
  return repeat;
}

}  // namespace vesk::capture::x11
