#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>

#include "capture/SampleSchedule.h"

namespace vesk::capture::x11 {

/// When a stream is to look: at a steady rate from the first wait on. A look that takes longer than
/// its turn makes the next ones fall out. To be used by one thread.
class FrameClock {
 public:
  explicit FrameClock(int fps);

  /// Waits for the next turn; false when it was asked to stop, also meanwhile.
  bool wait(const std::stop_token& stop);

 private:
  SampleSchedule schedule_;
  bool isFirst_ = true;
  std::mutex mutex_;
  std::condition_variable_any stopped_;
};

}  // namespace vesk::capture::x11
