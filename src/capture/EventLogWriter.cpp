#include "capture/EventLogWriter.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "package/Log.h"

namespace vesk::capture {
namespace {

using package::RecordedEvent;

RecordedEvent relativeTo(double origin, RecordedEvent event) {
  event.t = std::max(0.0, event.t - origin);
  return event;
}

/// JSON has no infinity and no NaN, so an event with one would be a line that nobody can read.
bool isEncodable(const RecordedEvent& event) {
  const auto isFinite = [](const std::optional<double>& number) {
    return std::isfinite(number.value_or(0));
  };
  return std::isfinite(event.t) && isFinite(event.x) && isFinite(event.y) &&
         isFinite(event.scrollDX) && isFinite(event.scrollDY);
}

std::string linesOf(const std::vector<RecordedEvent>& events) {
  std::string lines;
  for (const auto& event : events) {
    if (isEncodable(event)) lines += encodeRecordedEvent(event) + '\n';
  }
  return lines;
}

}  // namespace

EventLogWriter::EventLogWriter(EventLogFile file) : file_{std::move(file)} {}

void EventLogWriter::append(RecordedEvent event) {
  if (!timeOrigin_) {
    pending_.push_back(std::move(event));
    return;
  }
  buffer_.push_back(relativeTo(*timeOrigin_, std::move(event)));
  if (buffer_.size() >= batchSize) flush();
}

std::optional<std::size_t> EventLogWriter::setTimeOrigin(double seconds) {
  if (timeOrigin_) return std::nullopt;
  timeOrigin_ = seconds;
  const std::size_t waited = pending_.size();
  rebase(seconds);
  flush();
  return waited;
}

void EventLogWriter::finish() {
  if (!pending_.empty()) rebase(pending_.front().t);
  flush();
}

void EventLogWriter::rebase(double origin) {
  for (auto& event : pending_) buffer_.push_back(relativeTo(origin, std::move(event)));
  pending_.clear();
}

void EventLogWriter::flush() {
  if (buffer_.empty()) return;
  const auto written = file_.append(linesOf(buffer_));
  buffer_.clear();
  if (!written) {
    log(package::LogCategory::events).error("写入 events.jsonl 失败：{}", written.error().message);
  }
}

}  // namespace vesk::capture
