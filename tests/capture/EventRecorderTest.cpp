#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "capture/EventRecorder.h"
#include "capture/contract/Heard.h"
#include "capture/fake/FakeClock.h"
#include "capture/fake/FakeDisplayGeometry.h"
#include "capture/fake/FakeFrontApplication.h"
#include "capture/fake/FakeInputSource.h"
#include "package/EventLog.h"
#include "package/LogCapture.h"
#include "package/TemporaryDirectory.h"

namespace vesk::capture {
namespace {

using package::CaptureScope;
using package::RecordedEvent;
using Button = RecordedEvent::Button;
using Kind = RecordedEvent::Kind;
using Times = std::vector<double>;

constexpr Display display{.id = 1, .frame = {.x = 0, .y = 0, .width = 1000, .height = 500}};
const CaptureScope wholeDisplay{CaptureScope::Display{1}};
constexpr double start = 1000;

constexpr ScreenPoint inside{.x = 250, .y = 125};
constexpr ScreenPoint outside{.x = 1500, .y = 125};

/// Runs when the test says so.
struct FakeSampler {
  std::function<void(double)> sample;
  bool isRunning = false;
};

class FakeSampling final : public Listening {
 public:
  explicit FakeSampling(FakeSampler& sampler) : sampler_{sampler} { sampler_.isRunning = true; }
  ~FakeSampling() override { sampler_.isRunning = false; }

 private:
  FakeSampler& sampler_;
};

class EventRecorderTest : public ::testing::Test {
 protected:
  EventRecorderTest() {
    geometry_.setDisplays({display});
    input_.setPointer(inside);
  }

  void begin(const CaptureScope& scope = wholeDisplay, bool captureKeyboard = true) {
    ASSERT_TRUE(
        recorder_.start(display, scope, directory_ / "events.jsonl", captureKeyboard).has_value());
  }

  void press(ScreenPoint at, Button button = Button::left, std::int64_t clickCount = 1) {
    input_.setPointer(at);
    input_.send(ButtonChange{
        .time = clock_.now(), .button = button, .isPressed = true, .clickCount = clickCount});
  }
  void release(ScreenPoint at, Button button = Button::left) {
    input_.setPointer(at);
    input_.send(ButtonChange{.time = clock_.now(), .button = button});
  }
  void type(KeyCode keyCode, ModifierFlags modifiers, const std::string& characters) {
    input_.send(KeyPress{.time = clock_.now(),
                         .keyCode = keyCode,
                         .modifierFlags = modifiers,
                         .characters = characters});
  }
  void tick() { sampler_.sample(clock_.now()); }
  void tickAt(ScreenPoint at) {
    input_.setPointer(at);
    tick();
  }

  std::string text() const { return directory_.contents("events.jsonl"); }
  std::vector<RecordedEvent> logged() {
    recorder_.stop();
    auto log = package::decodeEventLog(text());
    EXPECT_TRUE(log.has_value());
    EXPECT_EQ(log->badLines, 0U);
    return log->events;
  }
  Times loggedTimes() {
    Times times;
    for (const auto& event : logged()) times.push_back(event.t);
    return times;
  }

  void runMain() {
    for (const auto& task : std::exchange(main_, {})) task();
  }

  package::TemporaryDirectory directory_;
  fake::FakeInputSource input_;
  fake::FakeFrontApplication front_{"编辑器"};
  fake::FakeDisplayGeometry geometry_;
  fake::FakeClock clock_{start};
  FakeSampler sampler_;
  std::vector<std::function<void()>> main_;  // filled by the recorder's queue, read after a stop
  EventRecorder recorder_{
      {.input = input_,
       .frontApplication = front_,
       .geometry = geometry_,
       .clock = clock_,
       .startSampler =
           [this](std::function<void(double)> sample) {
             sampler_.sample = std::move(sample);
             return std::make_unique<FakeSampling>(sampler_);
           },
       .postToMain = [this](std::function<void()> task) { main_.push_back(std::move(task)); }}};
};

TEST_F(EventRecorderTest, aClickHasPositionButtonCountAndApplication) {
  begin();
  recorder_.setTimeOrigin(start);
  clock_.advance(1.5);
  press(inside, Button::right, 2);
  const RecordedEvent expected{.t = 1.5,
                               .type = Kind::click,
                               .button = Button::right,
                               .x = 0.25,
                               .y = 0.25,
                               .clickCount = 2,
                               .app = "编辑器"};
  EXPECT_EQ(logged(), std::vector{expected});
  EXPECT_EQ(recorder_.clickCount(), 1);
}

TEST_F(EventRecorderTest, aReleaseHasPositionAndButtonAlone) {
  begin();
  release(inside, Button::other);
  const RecordedEvent expected{
      .t = 0, .type = Kind::up, .button = Button::other, .x = 0.25, .y = 0.25};
  EXPECT_EQ(logged(), std::vector{expected});
  EXPECT_EQ(recorder_.clickCount(), 0);
}

TEST_F(EventRecorderTest, aScrollHasPositionAndRawSteps) {
  begin();
  input_.send(ScrollStep{.time = clock_.now(), .dx = -1.5, .dy = 3});
  const RecordedEvent expected{
      .t = 0, .type = Kind::scroll, .x = 0.25, .y = 0.25, .scrollDX = -1.5, .scrollDY = 3};
  EXPECT_EQ(logged(), std::vector{expected});
}

TEST_F(EventRecorderTest, whatHappensOutsideThePictureIsNotLogged) {
  begin();
  press(outside);
  release(outside);
  input_.send(ScrollStep{.time = clock_.now(), .dy = 1});
  tickAt(outside);
  input_.setPointer(std::nullopt);
  input_.send(ButtonChange{.time = clock_.now(), .isPressed = true, .clickCount = 1});
  EXPECT_EQ(logged().size(), 0U);
  EXPECT_EQ(recorder_.clickCount(), 0);
  EXPECT_EQ(recorder_.eventCount(), 0);
}

TEST_F(EventRecorderTest, aMarkIsKeptWithoutAPositionOutsideThePicture) {
  begin();
  recorder_.mark(Kind::zoomIn);
  input_.setPointer(outside);
  recorder_.mark(Kind::zoomOut);
  const auto events = logged();
  ASSERT_EQ(events.size(), 2U);
  EXPECT_EQ(events[0].type, Kind::zoomIn);
  EXPECT_EQ(events[0].x, 0.25);
  EXPECT_EQ(events[0].y, 0.25);
  EXPECT_EQ(events[0].app, "编辑器");
  EXPECT_EQ(events[1].type, Kind::zoomOut);
  EXPECT_EQ(events[1].x, std::nullopt);
  EXPECT_EQ(events[1].y, std::nullopt);
}

TEST_F(EventRecorderTest, aMarkIsToldOnTheMainThread) {
  std::vector<Kind> told;
  recorder_.onCameraMark = [&](Kind kind) { told.push_back(kind); };
  begin();
  recorder_.mark(Kind::zoomIn);
  recorder_.mark(Kind::zoomOut);
  recorder_.stop();
  EXPECT_TRUE(told.empty());
  runMain();
  EXPECT_EQ(told, (std::vector{Kind::zoomIn, Kind::zoomOut}));
}

TEST_F(EventRecorderTest, otherKindsAndMarksBetweenTakesHaveNoEffect) {
  recorder_.mark(Kind::zoomIn);
  begin();
  recorder_.mark(Kind::click);
  recorder_.mark(Kind::gap);
  EXPECT_EQ(logged().size(), 0U);
  recorder_.mark(Kind::zoomIn);
  EXPECT_EQ(recorder_.zoomInCount(), 0);
}

TEST_F(EventRecorderTest, marksAreCountedOverAllTakesTheRestPerTake) {
  begin();
  press(inside);
  recorder_.mark(Kind::zoomIn);
  recorder_.mark(Kind::zoomOut);
  recorder_.stop();
  EXPECT_EQ(recorder_.eventCount(), 3);
  begin();
  recorder_.mark(Kind::zoomIn);
  recorder_.stop();
  EXPECT_EQ(recorder_.zoomInCount(), 2);
  EXPECT_EQ(recorder_.zoomOutCount(), 1);
  EXPECT_EQ(recorder_.clickCount(), 0);
  EXPECT_EQ(recorder_.eventCount(), 1);
}

TEST_F(EventRecorderTest, aPressTellsItsPosition) {
  std::vector<PicturePoint> told;
  recorder_.onClick = [&](PicturePoint at) { told.push_back(at); };
  begin();
  press(inside);
  release(inside);
  press(outside);
  EXPECT_EQ(told, (std::vector{PicturePoint{.x = 0.25, .y = 0.25}}));
}

TEST_F(EventRecorderTest, aStillPointerWritesOneMove) {
  begin();
  for (int i = 0; i < 5; ++i) {
    tick();
    clock_.advance(1.0 / 120);
  }
  const RecordedEvent expected{.t = 0, .type = Kind::move, .x = 0.25, .y = 0.25};
  EXPECT_EQ(logged(), std::vector{expected});
}

TEST_F(EventRecorderTest, aMoveNeedsAStepOfFourTenThousandthsOfThePicture) {
  begin();
  tickAt({.x = 500, .y = 250});
  tickAt({.x = 500.375, .y = 250});  // from the last that was logged, not from the last sample
  tickAt({.x = 500.5, .y = 250});
  tickAt({.x = 500.5, .y = 250.25});
  const auto events = logged();
  ASSERT_EQ(events.size(), 3U);
  EXPECT_EQ(events[1].x, 0.5005);
  EXPECT_EQ(events[2].y, 0.5005);
}

TEST_F(EventRecorderTest, aTakeBeginsWithAMoveAgain) {
  begin();
  tick();
  EXPECT_EQ(logged().size(), 1U);
  begin();
  tick();
  EXPECT_EQ(logged().size(), 1U);
}

TEST_F(EventRecorderTest, eventsBeforeTheFirstFrameAreAtZero) {
  begin();
  press(inside);
  clock_.advance(0.5);
  release(inside);
  recorder_.setTimeOrigin(start + 0.25);
  recorder_.setTimeOrigin(start + 5);
  press(inside);
  EXPECT_EQ(loggedTimes(), (Times{0, 0.25, 0.25}));
}

TEST_F(EventRecorderTest, withoutAnyFrameTheFirstEventIsAtZeroAndTheOthersKeepTheirSpacing) {
  begin();
  clock_.advance(3);
  press(inside);
  clock_.advance(0.5);
  release(inside);
  clock_.advance(0.25);
  press(inside);
  EXPECT_EQ(loggedTimes(), (Times{0, 0.5, 0.75}));
}

TEST_F(EventRecorderTest, theNextTakeHasItsOwnFirstFrame) {
  begin();
  recorder_.setTimeOrigin(start);
  recorder_.stop();
  clock_.advance(100);
  begin();
  recorder_.setTimeOrigin(start + 100);
  clock_.advance(1);
  press(inside);
  EXPECT_EQ(loggedTimes(), Times{1});
}

TEST_F(EventRecorderTest, batchesOf96AreOnDiskDuringTheTake) {
  begin();
  recorder_.setTimeOrigin(start);
  for (int i = 0; i < 96; ++i) press(inside);
  EXPECT_TRUE(contract::comesTrue(
      [&] { return package::decodeEventLog(text()).value().events.size() == 96; }));
  press(inside);
  EXPECT_EQ(logged().size(), 97U);
}

TEST_F(EventRecorderTest, aWindowIsFollowedWithinATenthOfASecond) {
  geometry_.putWindow({.id = 9, .frame = {.x = 100, .y = 100, .width = 200, .height = 100}});
  begin({CaptureScope::Window{9}});
  press({.x = 200, .y = 150});
  geometry_.putWindow({.id = 9, .frame = {.x = 600, .y = 300, .width = 200, .height = 100}});
  clock_.advance(0.11);
  press({.x = 700, .y = 350});
  const auto events = logged();
  ASSERT_EQ(events.size(), 2U);
  for (const auto& event : events) {
    EXPECT_EQ(event.x, 0.5);
    EXPECT_EQ(event.y, 0.5);
  }
}

TEST_F(EventRecorderTest, aRegionIsCountedFromTheBottomOfThePrimaryDisplay) {
  // 100 to 300 from the top.
  begin({CaptureScope::Region{.displayID = 1,
                              .rect = {.x = 400, .y = 200, .width = 400, .height = 200}}});
  press({.x = 500, .y = 150});
  press({.x = 500, .y = 350});
  const auto events = logged();
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].x, 0.25);
  EXPECT_EQ(events[0].y, 0.25);
}

TEST_F(EventRecorderTest, aKeyHasItsComboAndApplicationButNoPosition) {
  begin();
  recorder_.setTimeOrigin(start);
  type(1, shiftModifier | commandModifier, "S");
  const RecordedEvent expected{.t = 0, .type = Kind::key, .combo = "⇧⌘S", .app = "编辑器"};
  EXPECT_EQ(logged(), std::vector{expected});
}

TEST_F(EventRecorderTest, aKeyOutsideThePictureIsLogged) {
  input_.setPointer(outside);
  begin();
  type(0, commandModifier, "a");
  EXPECT_EQ(logged().size(), 1U);
}

TEST_F(EventRecorderTest, keysAreLoggedOnlyWhereTheUserWantsThem) {
  begin(wholeDisplay, false);
  type(1, commandModifier, "s");
  press(inside);
  const auto events = logged();
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].type, Kind::click);
}

TEST_F(EventRecorderTest, keysStandBeforeWhatHappensAfterThem) {
  begin();
  recorder_.setTimeOrigin(start);
  type(1, commandModifier, "s");
  clock_.advance(0.75);
  press(inside);
  type(2, commandModifier, "d");
  EXPECT_EQ(loggedTimes(), (Times{0, 0.75, 0.75}));
}

TEST_F(EventRecorderTest, aSecretIsAGapWithoutKeys) {
  begin();
  recorder_.setTimeOrigin(start);
  input_.setPointer(outside);
  type(0, 0, "a");
  clock_.advance(1);
  tick();
  type(1, 0, "x");  // already in the password field, of which word comes late
  input_.setSecureInput(true);
  tick();
  clock_.advance(1);
  type(1, 0, "y");
  clock_.advance(1);
  input_.setSecureInput(false);
  tick();
  clock_.advance(1);
  type(2, 0, "d");
  const std::vector<RecordedEvent> expected{
      {.t = 0, .type = Kind::key, .combo = "A", .app = "编辑器"},
      {.t = 1, .type = Kind::gap, .reason = "secureInputBegan"},
      {.t = 3, .type = Kind::gap, .reason = "secureInputEnded"},
      {.t = 4, .type = Kind::key, .combo = "D", .app = "编辑器"}};
  EXPECT_EQ(logged(), expected);
}

TEST_F(EventRecorderTest, aSecretThatWasBegunBeforeTheTakeIsNoGapUntilItEnds) {
  input_.setSecureInput(true);
  input_.setPointer(outside);
  begin();
  tick();
  type(1, 0, "x");
  input_.setSecureInput(false);
  tick();
  const RecordedEvent expected{.t = 0, .type = Kind::gap, .reason = "secureInputEnded"};
  EXPECT_EQ(logged(), std::vector{expected});
}

TEST_F(EventRecorderTest, aTakeThatEndsAsASecretBeginsDoesNotTellIt) {
  begin();
  type(1, 0, "x");
  input_.setSecureInput(true);
  const RecordedEvent expected{.t = 0, .type = Kind::gap, .reason = "secureInputBegan"};
  EXPECT_EQ(logged(), std::vector{expected});
}

TEST_F(EventRecorderTest, changesOfTheApplicationAreLoggedOnce) {
  begin();
  recorder_.setTimeOrigin(start);
  front_.activate("编辑器");
  clock_.advance(1);
  front_.activate("浏览器");
  front_.activate("浏览器");
  clock_.advance(1);
  front_.activate(std::nullopt);
  front_.activate(std::nullopt);
  const std::vector<RecordedEvent> expected{{.t = 1, .type = Kind::appChange, .app = "浏览器"},
                                            {.t = 2, .type = Kind::appChange}};
  EXPECT_EQ(logged(), expected);
}

TEST_F(EventRecorderTest, nothingIsHeardAfterTheStop) {
  begin();
  EXPECT_TRUE(sampler_.isRunning);
  recorder_.stop();
  EXPECT_FALSE(sampler_.isRunning);
  press(inside);
  front_.activate("浏览器");
  recorder_.setTimeOrigin(start);
  EXPECT_EQ(logged().size(), 0U);
}

TEST_F(EventRecorderTest, aNewStartOverwritesTheFile) {
  begin();
  press(inside);
  begin();
  release(inside);
  const auto events = logged();
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].type, Kind::up);
}

TEST_F(EventRecorderTest, aFileThatCannotBeOpenedFailsTheStart) {
  const auto started =
      recorder_.start(display, wholeDisplay, directory_ / "missing/events.jsonl", true);
  ASSERT_FALSE(started.has_value());
  EXPECT_NE(started.error().message.find("events.jsonl"), std::string::npos);
  EXPECT_FALSE(sampler_.isRunning);
}

TEST_F(EventRecorderTest, withoutInputThePointerAndTheMarksAreStillLogged) {
  input_.fail({.message = "没有输入设备"});
  front_.fail({.message = "显示服务器已断开"});
  {
    const package::LogCapture log{package::LogCategory::events};
    begin();
    EXPECT_NE(log.text().find("没有输入设备"), std::string::npos);
    EXPECT_NE(log.text().find("显示服务器已断开"), std::string::npos);
  }
  tick();
  recorder_.mark(Kind::zoomIn);
  EXPECT_EQ(logged().size(), 2U);
}

TEST_F(EventRecorderTest, itStopsWhenItGoes) {
  const auto file = directory_ / "other.jsonl";
  {
    EventRecorder recorder{
        {.input = input_,
         .frontApplication = front_,
         .geometry = geometry_,
         .clock = clock_,
         .startSampler =
             [](const std::function<void(double)>&) { return std::unique_ptr<Listening>{}; },
         .postToMain = [](const std::function<void()>&) {}}};
    ASSERT_TRUE(recorder.start(display, wholeDisplay, file, true).has_value());
    press(inside);
  }
  press(inside);
  EXPECT_EQ(package::decodeEventLog(directory_.contents("other.jsonl")).value().events.size(), 1U);
}

}  // namespace
}  // namespace vesk::capture
