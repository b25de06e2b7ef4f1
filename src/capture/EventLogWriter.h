#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "capture/EventLogFile.h"
#include "package/RecordedEvent.h"

namespace vesk::capture {

/// Writes the input log of a take in batches. Until the time of the first frame is known, events
/// wait; from then on they are written relative to it, those from before it at 0. A batch that
/// cannot be written is lost, which the log tells. To be used by one thread at a time.
class EventLogWriter {
 public:
  static constexpr std::size_t batchSize = 96;

  explicit EventLogWriter(EventLogFile file);

  /// @param event with its `t` on the take's clock.
  void append(package::RecordedEvent event);

  /// Sets the time of the first frame and writes what has waited for it. Only the first call has an
  /// effect; its result is the number of events that waited.
  std::optional<std::size_t> setTimeOrigin(double seconds);

  /// Writes what is left. Without a time of the first frame the first event is at 0.
  void finish();

 private:
  void rebase(double origin);
  void flush();

  EventLogFile file_;
  std::optional<double> timeOrigin_;
  std::vector<package::RecordedEvent> pending_;  ///< on the take's clock
  std::vector<package::RecordedEvent> buffer_;   ///< relative to the first frame
};

}  // namespace vesk::capture
