#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>
#include <vector>

#include "capture/ScreenCaptureEngine.h"
#include "capture/fake/FakeDisplayGeometry.h"
#include "capture/fake/FakePicture.h"
#include "capture/fake/FakeScreenSource.h"
#include "capture/fake/FakeSoundSource.h"
#include "capture/fake/FakeTakeMovies.h"
#include "package/LogCapture.h"
#include "package/TemporaryDirectory.h"

namespace vesk::capture {
namespace {

using media::HostTime;
using package::CaptureScope;
using package::Rect;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace std::chrono_literals;

constexpr HostTime second = 1s;

class ScreenCaptureEngineTest : public testing::Test {
 protected:
  ScreenCaptureEngineTest() {
    engine_.onFirstFrame = [this](double seconds) { firstFrames_.push_back(seconds); };
    engine_.onInterrupt = [this](const std::string& reason) { interruptions_.push_back(reason); };
  }

  std::expected<void, CaptureError> start(CaptureScope scope = {CaptureScope::Display{1}},
                                          bool withSound = false) {
    return engine_.start({.displayID = 1,
                          .scope = std::move(scope),
                          .outputURL = folder_.path() / "screen.mov",
                          .capturesSystemAudio = withSound});
  }
  void look(HostTime stamp, const Rect& contentRect) {
    screen_.deliver({.status = ScreenFrame::Status::idle,
                     .stamp = stamp,
                     .contentRect = contentRect,
                     .pixels = {}});
  }
  void hear(HostTime stamp) {
    static constexpr std::array<float, 8> samples{};
    sound_.deliver({.stamp = stamp, .position = {}, .samples = samples});
  }
  fake::FakeTakeMovies::Movie movie() const { return *movies_.movie("screen.mov"); }

  package::TemporaryDirectory folder_;
  fake::FakeScreenSource screen_;
  fake::FakeSoundSource sound_{2};
  fake::FakeDisplayGeometry geometry_;
  fake::FakeTakeMovies movies_;
  std::vector<double> firstFrames_;
  std::vector<std::string> interruptions_;
  ScreenCaptureEngine engine_{
      {.screen = screen_,
       .systemSound = sound_,
       .geometry = geometry_,
       .chooseEncoder = [](const auto&) { return media::plainestCaptureEncoder(); },
       .openMovie = movies_.opener()}};
};

TEST_F(ScreenCaptureEngineTest, writesTheWholeDisplayAtItsBitRate) {
  ASSERT_TRUE(start());
  const auto settings = movie().settings;
  EXPECT_EQ(settings.kind, media::GrowingFile::quickTime);
  ASSERT_TRUE(settings.pictures);
  EXPECT_EQ(*settings.pictures,
            (media::PictureTrackSettings{
                .width = 1920, .height = 1080, .fps = 60, .bitRate = 6'220'800}));
  EXPECT_FALSE(settings.sound);
  EXPECT_EQ(engine_.pixelWidth(), 1920);
  EXPECT_EQ(engine_.pixelHeight(), 1080);
  EXPECT_EQ(engine_.scaleFactor(), 1.0);
  EXPECT_EQ(screen_.lastRequest()->fps, 60);
}

TEST_F(ScreenCaptureEngineTest, anOddWidthLosesItsLastPixel) {
  geometry_.putWindow({.id = 7, .title = {}, .owner = {}, .frame = {10, 10, 1001, 501}});
  ASSERT_TRUE(start({CaptureScope::Window{7}}));
  EXPECT_EQ(engine_.pixelWidth(), 1000);
  EXPECT_EQ(engine_.pixelHeight(), 500);
}

TEST_F(ScreenCaptureEngineTest, aDisplayThatWasUnpluggedGivesWayToTheFirst) {
  ASSERT_TRUE(start({CaptureScope::Display{99}}));
  EXPECT_EQ(screen_.lastRequest()->subject,
            decltype(ScreenRequest::subject)(ScreenRequest::Area{{0, 0, 1920, 1080}}));
}

TEST_F(ScreenCaptureEngineTest, aWindowThatHasClosedIsAnError) {
  const auto started = start({CaptureScope::Window{7}});
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().message, "没有可用的显示器");
  EXPECT_THAT(movies_.movies(), IsEmpty());
}

TEST_F(ScreenCaptureEngineTest, noDisplayIsAnError) {
  geometry_.setDisplays({});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error(), CaptureError::noDisplayAvailable());
}

TEST_F(ScreenCaptureEngineTest, aRegionWhoseScreenIsGoneBecomesTheWholeDisplay) {
  ASSERT_TRUE(start({CaptureScope::Region{.displayID = 99, .rect = {10, 10, 100, 100}}}));
  EXPECT_EQ(engine_.pixelWidth(), 1920);
}

TEST_F(ScreenCaptureEngineTest, aWriterThatCannotBeMadeIsAnError) {
  movies_.failToOpen(
      media::MediaError{.kind = media::MediaError::Kind::diskFull, .message = "磁盘已满"});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().message, "无法创建视频写入器：磁盘已满");
}

TEST_F(ScreenCaptureEngineTest, aStreamThatCannotBeHadIsAnErrorAndStopClosesTheFile) {
  screen_.fail(BackendError{"连接不上"});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().message, "连接不上");
  engine_.stop();
  EXPECT_TRUE(movie().isFinished);
}

TEST_F(ScreenCaptureEngineTest, stoppedWithoutAStartItReportsNothing) {
  EXPECT_EQ(engine_.stop(), ScreenCaptureEngine::Report{});
}

TEST_F(ScreenCaptureEngineTest, theFirstPictureIsTheOriginOfTime) {
  ASSERT_TRUE(start());
  screen_.rest(4 * second);
  screen_.show(5 * second);
  screen_.show(6 * second);
  EXPECT_THAT(firstFrames_, ElementsAre(5.0));
  const auto report = engine_.stop();
  EXPECT_EQ(report.firstFramePTS, 5.0);
  EXPECT_EQ(report.idleFrames, 0);
  EXPECT_EQ(report.completeFrames, 2);
}

TEST_F(ScreenCaptureEngineTest, aStillScreenIsFilledUpToTheLastLook) {
  ASSERT_TRUE(start());
  screen_.show(10 * second);
  screen_.show(15 * second);
  screen_.rest(18 * second);
  screen_.rest(20 * second);
  const auto report = engine_.stop();
  EXPECT_THAT(movie().pictures, ElementsAre(10 * second, 15 * second));
  EXPECT_THAT(movie().repeats, ElementsAre(20 * second));
  EXPECT_EQ(*report.lastAnyPTS - *report.lastCompletePTS, 5.0);
  EXPECT_EQ(report.idleFrames, 2);
}

TEST_F(ScreenCaptureEngineTest, withoutAnIdleLookTheTailIsASixtiethOfASecond) {
  ASSERT_TRUE(start());
  screen_.show(10 * second);
  screen_.show(11 * second);
  engine_.stop();
  EXPECT_THAT(movie().repeats, ElementsAre(11 * second + second / 60));
}

TEST_F(ScreenCaptureEngineTest, aSinglePictureGetsNoTail) {
  ASSERT_TRUE(start());
  screen_.show(10 * second);
  screen_.rest(12 * second);
  engine_.stop();
  EXPECT_THAT(movie().repeats, IsEmpty());
  EXPECT_TRUE(movie().isFinished);
}

TEST_F(ScreenCaptureEngineTest, picturesWithoutRoomAreCountedAndOneInThirtyIsLogged) {
  ASSERT_TRUE(start());
  screen_.show(second);
  movies_.refusePictures(true);
  const package::LogCapture log{package::LogCategory::capture};
  for (int i = 0; i < 61; ++i) screen_.show(2 * second + i * 1ms);
  EXPECT_THAT(log.text(), HasSubstr("dropped 1 frames"));
  EXPECT_THAT(log.text(), HasSubstr("dropped 31 frames"));
  EXPECT_THAT(log.text(), HasSubstr("dropped 61 frames"));
  const auto text = log.text();
  EXPECT_EQ(std::ranges::count(text, '\n'), 3);
  const auto report = engine_.stop();
  EXPECT_EQ(report.droppedFrames, 61);
  EXPECT_EQ(report.completeFrames, 1);
  EXPECT_FALSE(report.interrupted);
}

TEST_F(ScreenCaptureEngineTest, soundBeforeTheFirstPictureIsNotWritten) {
  ASSERT_TRUE(start({CaptureScope::Display{1}}, true));
  EXPECT_EQ(movie().settings.sound, (media::SoundTrackSettings{.channels = 2, .bitRate = 160'000}));
  hear(1 * second);
  screen_.show(2 * second);
  hear(3 * second);
  engine_.stop();
  EXPECT_THAT(movie().sounds, ElementsAre(3 * second));
}

TEST_F(ScreenCaptureEngineTest, aMachineThatPlaysNothingIsRecordedInSilence) {
  sound_.fail(BackendError{"没有声音服务"});
  ASSERT_TRUE(start({CaptureScope::Display{1}}, true));
  screen_.show(2 * second);
  EXPECT_FALSE(engine_.stop().interrupted);
}

TEST_F(ScreenCaptureEngineTest, aResizedWindowShowsInTheContentRectangleAlone) {
  geometry_.putWindow({.id = 7, .title = {}, .owner = {}, .frame = {0, 0, 400, 300}});
  ASSERT_TRUE(start({CaptureScope::Window{7}}));
  screen_.show(1 * second);
  look(2 * second, {0, 0, 400, 300});
  look(3 * second, {0, 0, 400.4, 300});
  look(4 * second, {0, 0, 200, 300});
  const auto report = engine_.stop();
  EXPECT_EQ(report.contentRectChanges, 1);
  EXPECT_EQ(report.firstContentRect, (Rect{0, 0, 400, 300}));
  EXPECT_EQ(report.lastContentRect, (Rect{0, 0, 200, 300}));
  EXPECT_EQ(engine_.pixelWidth(), 400);
}

TEST_F(ScreenCaptureEngineTest, aWriterThatFailsInterruptsOnce) {
  ASSERT_TRUE(start());
  screen_.show(1 * second);
  movies_.breakMovie("screen.mov", "磁盘已满");
  screen_.show(2 * second);
  screen_.show(3 * second);
  EXPECT_THAT(interruptions_, ElementsAre("录制中断：磁盘已满"));
  const auto report = engine_.stop();
  EXPECT_TRUE(report.interrupted);
  EXPECT_EQ(report.interruptReason, "录制中断：磁盘已满");
  EXPECT_EQ(report.completeFrames, 1);
}

TEST_F(ScreenCaptureEngineTest, aWriterThatFailsWithoutWordsIsNamed) {
  ASSERT_TRUE(start());
  screen_.show(1 * second);
  movies_.breakMovie("screen.mov", "");
  screen_.show(2 * second);
  EXPECT_THAT(interruptions_, ElementsAre("录制中断：写入器异常终止"));
}

TEST_F(ScreenCaptureEngineTest, aStreamThatEndsByItselfInterrupts) {
  ASSERT_TRUE(start());
  screen_.show(1 * second);
  screen_.end({.cause = ScreenStreamEnd::Cause::other, .message = "显示服务器断开"});
  EXPECT_THAT(interruptions_, ElementsAre("屏幕捕获意外停止：显示服务器断开"));
  EXPECT_EQ(engine_.stop().interruptReason, "屏幕捕获意外停止：显示服务器断开");
}

TEST_F(ScreenCaptureEngineTest, aSystemWithoutResourcesHasItsOwnReason) {
  ASSERT_TRUE(start());
  screen_.end({.cause = ScreenStreamEnd::Cause::resources, .message = "内存不足"});
  EXPECT_THAT(interruptions_,
              ElementsAre("系统中断了屏幕捕获（错误 -3821）。常见原因：磁盘空间不足、系统负载过高。"
                          "已保存中断前的内容。"));
}

TEST_F(ScreenCaptureEngineTest, aFileThatCannotBeCompletedIsReported) {
  ASSERT_TRUE(start());
  screen_.show(1 * second);
  movies_.failToFinish("screen.mov", "磁盘已满");
  const auto report = engine_.stop();
  EXPECT_TRUE(report.interrupted);
  EXPECT_EQ(report.interruptReason, "录制文件写入未完成：磁盘已满");
  EXPECT_THAT(interruptions_, IsEmpty());
}

TEST_F(ScreenCaptureEngineTest, aSecondTakeCountsOnButBeginsItsTimeAnew) {
  ASSERT_TRUE(start());
  screen_.show(1 * second);
  engine_.stop();
  ASSERT_TRUE(start());
  screen_.show(5 * second);
  const auto report = engine_.stop();
  EXPECT_EQ(report.completeFrames, 2);
  EXPECT_EQ(report.firstFramePTS, 5.0);
  EXPECT_THAT(firstFrames_, ElementsAre(1.0, 5.0));
}

}  // namespace
}  // namespace vesk::capture
