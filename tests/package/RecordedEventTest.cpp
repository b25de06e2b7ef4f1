#include <gtest/gtest.h>

#include "package/EventLog.h"
#include "package/RecordedEvent.h"

namespace vesk::package {
namespace {

RecordedEvent fullEvent() {
  RecordedEvent event;
  event.t = 1.25;
  event.type = RecordedEvent::Kind::click;
  event.button = RecordedEvent::Button::right;
  event.x = 0.1;
  event.y = 1.0 / 3;
  event.scrollDX = -3.5;
  event.scrollDY = 1e-300;
  event.clickCount = 9007199254740993;
  event.combo = "⌃⌘\"\\\n";
  event.app = "终端";
  event.reason = "";
  return event;
}

TEST(RecordedEvent, everyCaseComesBackFromItsRawValue) {
  for (const auto kind : recordedEventKinds) EXPECT_EQ(recordedEventKind(rawValue(kind)), kind);
  using enum RecordedEvent::Button;
  for (const auto button : {left, right, other}) {
    EXPECT_EQ(recordedEventButton(rawValue(button)), button);
  }
  EXPECT_EQ(rawValue(RecordedEvent::Kind::appChange), "appChange");
  EXPECT_EQ(rawValue(RecordedEvent::Kind::zoomOut), "zoomOut");
  EXPECT_EQ(recordedEventKind("Click"), std::nullopt);
  EXPECT_EQ(recordedEventButton(""), std::nullopt);
}

TEST(RecordedEvent, aMoveIsOneCompactObjectWithoutAbsentFields) {
  RecordedEvent event;
  event.t = 1.25;
  event.x = 0.5;
  event.y = 0.25;
  EXPECT_EQ(encodeRecordedEvent(event), R"({"t":1.25,"type":"move","x":0.5,"y":0.25})");
}

TEST(RecordedEvent, whatIsWrittenReadsBack) {
  for (const auto& event : {fullEvent(), RecordedEvent{}}) {
    const auto log = decodeEventLog(encodeRecordedEvent(event));
    ASSERT_TRUE(log);
    EXPECT_EQ(*log, (EventLog{{event}, 0}));
  }
}

TEST(RecordedEvent, aTextThatIsNotUtf8IsWrittenWithReplacements) {
  RecordedEvent event;
  event.app = "a\xC0z";
  EXPECT_EQ(decodeEventLog(encodeRecordedEvent(event))->events.at(0).app, "a\uFFFDz");
}

TEST(OptionalText, isAValue) {
  OptionalText text;
  EXPECT_FALSE(text);
  EXPECT_EQ(text, std::nullopt);
  EXPECT_EQ(text.value_or("none"), "none");
  text = "终端";
  OptionalText copy = text;
  EXPECT_EQ(copy, text);
  text = "Finder";
  EXPECT_EQ(*copy, "终端");
  EXPECT_NE(copy, text);
  copy = *&copy;
  EXPECT_EQ(copy->size(), 6U);
  copy.reset();
  EXPECT_EQ(copy, OptionalText());
  EXPECT_NE(OptionalText(""), copy);
}

}  // namespace
}  // namespace vesk::package
