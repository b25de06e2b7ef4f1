#pragma once

namespace vesk::capture {

/// The one clock of a take, in seconds; picture, sound and input are stamped by it.
class Clock {
 public:
  virtual ~Clock() = default;

  /// Never goes back. May be called from any thread.
  virtual double now() const = 0;
};

/// CLOCK_MONOTONIC, by which the display server and the sound server stamp as well.
class MonotonicClock final : public Clock {
 public:
  double now() const override;
};

}  // namespace vesk::capture
