#pragma once

#include <limits>
#include <vector>

#include "package/RecordedEvent.h"

namespace vesk::capture {

/// Holds the records of keys back for half a second before they may be written. Word that a
/// password field has the keyboard comes through the application that owns the field and thus late,
/// perhaps after the first keys; what was typed shortly before it is dropped, and so is all that is
/// typed until word that the field has been left. Times are those of the records.
class HeldKeys {
 public:
  static constexpr double holdTime = 0.5;

  explicit HeldKeys(bool isSecureInput) : isSecureInput_{isSecureInput} {}

  void add(package::RecordedEvent key);

  void secureInputBegan(double t);
  void secureInputEnded(double t);

  /// The keys that have been held long enough, in the order they came.
  std::vector<package::RecordedEvent> release(double now);
  /// All that is held.
  std::vector<package::RecordedEvent> releaseAll();

 private:
  bool isSecureInput_;
  double secureInputEnd_ = -std::numeric_limits<double>::infinity();
  std::vector<package::RecordedEvent> keys_;
};

}  // namespace vesk::capture
