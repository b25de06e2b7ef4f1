#pragma once

#include <chrono>
#include <cstdio>

namespace vesk::app {

/// Shows how far a long command is: on a terminal one line that is rewritten in place, with a bar,
/// percentage, speed and time left; elsewhere one plain line for each tenth.
class ProgressLine {
 public:
  using Clock = std::chrono::steady_clock;

  enum class Form { rewritten, plain };
  /// The form that suits what the stream is connected to.
  static Form suitableForm(std::FILE* out);

  /// @param mediaSeconds length of what is being worked through, for the speed.
  ProgressLine(std::FILE* out, Form form, double mediaSeconds, Clock::time_point start);

  /// Shows that this share, 0…1, is done.
  void show(double share, Clock::time_point now);

  /// Leaves the line for what comes next.
  void end();

 private:
  void rewrite(double share, Clock::time_point now);

  std::FILE* out_;
  Form form_;
  double mediaSeconds_;
  Clock::time_point start_;
  int lastShown_ = -1;  ///< per cent on a terminal, tenths elsewhere
  bool lineIsOpen_ = false;
};

}  // namespace vesk::app
