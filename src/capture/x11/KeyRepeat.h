#pragma once

#include <optional>

#include "capture/x11/KeyTable.h"

namespace vesk::capture::x11 {

/// How a key that is held down repeats, in seconds; the interval is above 0.
struct RepeatRate {
  double delay = 0.5;
  double interval = 0.04;
  bool operator==(const RepeatRate&) const = default;
};

/// Tells when a held key repeats. The display server repeats keys for applications but not in what
/// it tells of the devices themselves.
class KeyRepeat {
 public:
  struct Repeat {
    XKeyCode key = 0;
    double time = 0;
    bool operator==(const Repeat&) const = default;
  };

  /// @param rate nothing for a key that does not repeat; the one that does goes on under it.
  void press(XKeyCode key, double time, const std::optional<RepeatRate>& rate);
  void release(XKeyCode key);
  void releaseAll() { held_.reset(); }

  /// The time of the next repeat.
  std::optional<double> due() const;
  /// The next repeat, if it is due.
  std::optional<Repeat> next(double now);

 private:
  struct Held {
    Repeat next;
    double interval;
  };
  std::optional<Held> held_;  ///< the key pressed last
};

}  // namespace vesk::capture::x11
