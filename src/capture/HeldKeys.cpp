#include "capture/HeldKeys.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vesk::capture {

using package::RecordedEvent;

void HeldKeys::add(RecordedEvent key) {
  if (isSecureInput_ || key.t <= secureInputEnd_) return;
  keys_.push_back(std::move(key));
}

void HeldKeys::secureInputBegan(double t) {
  isSecureInput_ = true;
  std::erase_if(keys_, [&](const RecordedEvent& key) { return key.t > t - holdTime; });
}

void HeldKeys::secureInputEnded(double t) {
  isSecureInput_ = false;
  secureInputEnd_ = t;
}

std::vector<RecordedEvent> HeldKeys::release(double now) {
  const auto end =
      std::ranges::find_if(keys_, [&](const RecordedEvent& key) { return key.t > now - holdTime; });
  std::vector<RecordedEvent> released{std::make_move_iterator(keys_.begin()),
                                      std::make_move_iterator(end)};
  keys_.erase(keys_.begin(), end);
  return released;
}

std::vector<RecordedEvent> HeldKeys::releaseAll() {
  return std::exchange(keys_, {});
}

}  // namespace vesk::capture
