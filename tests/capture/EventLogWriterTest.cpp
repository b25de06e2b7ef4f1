#include <gtest/gtest.h>

#include <cerrno>
#include <limits>

#include "capture/EventLogWriter.h"
#include "package/EventLog.h"
#include "package/FaultyCalls.h"
#include "package/LogCapture.h"
#include "package/TemporaryDirectory.h"

namespace vesk::capture {
namespace {

using package::FaultyCalls;
using package::RecordedEvent;
using Times = std::vector<double>;

RecordedEvent moveAt(double t) {
  return {.t = t, .type = RecordedEvent::Kind::move, .x = 0.5, .y = 0.25};
}

class EventLogWriterTest : public ::testing::Test {
 protected:
  Times written() const {
    const auto log = package::decodeEventLog(directory_.contents("events.jsonl"));
    EXPECT_TRUE(log.has_value());
    EXPECT_EQ(log->badLines, 0U);
    Times times;
    for (const auto& event : log->events) times.push_back(event.t);
    return times;
  }

  package::TemporaryDirectory directory_;
  FaultyCalls calls_;
  EventLogWriter writer_{EventLogFile::create(directory_ / "events.jsonl", calls_).value()};
};

TEST_F(EventLogWriterTest, eventsWaitForTheFirstFrameAndAreThenWrittenRelativeToIt) {
  writer_.append(moveAt(99.5));
  writer_.append(moveAt(100));
  writer_.append(moveAt(100.25));
  EXPECT_EQ(written(), Times{});
  EXPECT_EQ(writer_.setTimeOrigin(100), 3U);
  EXPECT_EQ(written(), (Times{0, 0, 0.25}));
}

TEST_F(EventLogWriterTest, onlyTheFirstTimeOfAFirstFrameCounts) {
  EXPECT_EQ(writer_.setTimeOrigin(100), 0U);
  EXPECT_EQ(writer_.setTimeOrigin(200), std::nullopt);
  writer_.append(moveAt(201));
  writer_.finish();
  EXPECT_EQ(written(), Times{101});
}

TEST_F(EventLogWriterTest, batchesAreOf96) {
  writer_.setTimeOrigin(0);
  for (int i = 0; i < 95; ++i) writer_.append(moveAt(i));
  EXPECT_EQ(written().size(), 0U);
  writer_.append(moveAt(95));
  EXPECT_EQ(written().size(), 96U);
  for (int i = 0; i < 95; ++i) writer_.append(moveAt(i));
  EXPECT_EQ(written().size(), 96U);
  writer_.finish();
  EXPECT_EQ(written().size(), 191U);
}

TEST_F(EventLogWriterTest, eachBatchIsOneWrite) {
  calls_.bytesAtOnce = 1 << 20;
  writer_.setTimeOrigin(0);
  for (int i = 0; i < 192; ++i) writer_.append(moveAt(i));
  EXPECT_EQ(std::ranges::count(calls_.calls(), FaultyCalls::Call::write), 2);
}

TEST_F(EventLogWriterTest, withoutAFirstFrameTheFirstEventIsAtZeroAndTheSpacingStays) {
  writer_.append(moveAt(100));
  writer_.append(moveAt(100.5));
  writer_.append(moveAt(99));  // arrived later, taken earlier
  writer_.append(moveAt(103));
  writer_.finish();
  EXPECT_EQ(written(), (Times{0, 0.5, 0, 3}));
}

TEST_F(EventLogWriterTest, withoutAnyEventNothingIsWritten) {
  writer_.finish();
  EXPECT_EQ(directory_.contents("events.jsonl"), "");
}

TEST_F(EventLogWriterTest, anEventThatIsNoJSONIsLeftOut) {
  writer_.setTimeOrigin(0);
  writer_.append(moveAt(1));
  writer_.append(moveAt(std::numeric_limits<double>::infinity()));
  auto event = moveAt(2);
  event.x = std::numeric_limits<double>::quiet_NaN();
  writer_.append(event);
  writer_.append(moveAt(3));
  writer_.finish();
  EXPECT_EQ(written(), (Times{1, 3}));
}

TEST_F(EventLogWriterTest, aBatchThatCannotBeWrittenIsLostAndLoggedAndTheNextIsWritten) {
  const package::LogCapture log{package::LogCategory::events};
  writer_.setTimeOrigin(0);
  calls_.before = [](std::size_t, FaultyCalls::Call call) {
    return call == FaultyCalls::Call::write ? ENOSPC : 0;
  };
  for (int i = 0; i < 96; ++i) writer_.append(moveAt(i));
  EXPECT_NE(log.text().find("error: 写入 events.jsonl 失败："), std::string::npos);
  calls_.before = [](std::size_t, FaultyCalls::Call) { return 0; };
  writer_.append(moveAt(500));
  writer_.finish();
  EXPECT_EQ(written(), Times{500});
}

}  // namespace
}  // namespace vesk::capture
