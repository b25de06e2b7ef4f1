#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "capture/MainQueue.h"
#include "capture/RecordingSession.h"
#include "capture/fake/FakeCameraSource.h"
#include "capture/fake/FakeClock.h"
#include "capture/fake/FakeDisplayGeometry.h"
#include "capture/fake/FakeFrontApplication.h"
#include "capture/fake/FakeHotKeys.h"
#include "capture/fake/FakeInputSource.h"
#include "capture/fake/FakeScreenSource.h"
#include "capture/fake/FakeSoundSource.h"
#include "capture/fake/FakeTakeMovies.h"
#include "package/RecordingProject.h"
#include "package/TemporaryDirectory.h"
#include "package/UserDefaults.h"

namespace vesk::capture {
namespace {

using package::CaptureScope;
using package::RecordingMeta;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using namespace std::chrono_literals;
using Kind = package::RecordedEvent::Kind;

/// Everything that a session works with, in the hands of a test.
class RecordingSessionTest : public testing::Test {
 protected:
  RecordingSessionTest() {
    auto geometry = std::make_unique<fake::FakeDisplayGeometry>();
    auto screen = std::make_unique<fake::FakeScreenSource>();
    auto input = std::make_unique<fake::FakeInputSource>();
    auto hotKeys = std::make_unique<fake::FakeHotKeys>();
    auto system = std::make_unique<fake::FakeSoundSource>(2);
    auto microphone = std::make_unique<fake::FakeSoundSource>(1);
    auto camera = std::make_unique<fake::FakeCameraSource>();
    geometry_ = geometry.get();
    screen_ = screen.get();
    input_ = input.get();
    hotKeys_ = hotKeys.get();
    system_ = system.get();
    microphone_ = microphone.get();
    camera_ = camera.get();
    backends_ = {.name = "fake",
                 .capabilities = {},
                 .geometry = std::move(geometry),
                 .screen = std::move(screen),
                 .input = std::move(input),
                 .hotKeys = std::move(hotKeys),
                 .frontApplication = std::make_unique<fake::FakeFrontApplication>(),
                 .systemSound = std::move(system),
                 .microphone = std::move(microphone),
                 .camera = std::move(camera),
                 .injector = {},
                 .keyboardLayout = [](KeyCode) { return std::string{}; }};
    library_.setRoot(folder_ / "takes");
    makeSession();
  }

  void makeSession() {
    session_ = std::make_unique<RecordingSession>(RecordingSession::Surroundings{
        .backends = backends_,
        .library = library_,
        .clock = clock_,
        .now = [this] { return now_; },
        .startSampler = [](const auto&) { return std::make_unique<Listening>(); },
        .startTicker =
            [this](double seconds, std::function<void()> tick) {
              tickInterval_ = seconds;
              tick_ = std::move(tick);
              return std::make_unique<Listening>();
            },
        .postToMain = main_.poster(),
        .chooseEncoder = [](const auto&) { return media::plainestCaptureEncoder(); },
        .openMovie = movies_.opener()});
  }

  template <typename State>
  bool is() const {
    return std::holds_alternative<State>(session_->state());
  }
  template <typename State>
  bool becomes() {
    return main_.runUntil([this] { return is<State>(); });
  }
  bool record(const RecordingSession::Order& order = {}) {
    session_->start(order);
    return becomes<state::Recording>();
  }
  bool finish() {
    session_->stop();
    return becomes<state::Finished>();
  }
  std::string failureMessage() const {
    const auto* const failed = std::get_if<state::Failed>(&session_->state());
    return failed ? failed->message : "";
  }
  std::vector<std::filesystem::path> packages() const {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "takes")) {
      found.push_back(entry.path());
    }
    return found;
  }
  RecordingMeta meta() const {
    const auto project = package::RecordingProject::load(*session_->packageURL(), {});
    return project ? project->meta : RecordingMeta{};
  }
  void hear(const fake::FakeSoundSource& source, media::HostTime stamp) const {
    static constexpr std::array<float, 4> samples{};
    source.deliver({.stamp = stamp, .position = {}, .samples = samples});
  }

  package::TemporaryDirectory folder_;
  package::UserDefaults defaults_{folder_ / "defaults.json"};
  package::RecordingLibrary library_{
      {.defaults = defaults_,
       .trashFolder = package::TrashFolder{package::TrashFolder::currentSurroundings()},
       .makeThumbnail = [](const auto&) { return std::nullopt; },
       .askForFolder = [](const auto&) { return std::nullopt; },
       .now = [] { return package::Timestamp{}; }}};
  CaptureBackends backends_;
  fake::FakeDisplayGeometry* geometry_ = nullptr;
  fake::FakeScreenSource* screen_ = nullptr;
  fake::FakeInputSource* input_ = nullptr;
  fake::FakeHotKeys* hotKeys_ = nullptr;
  fake::FakeSoundSource* system_ = nullptr;
  fake::FakeSoundSource* microphone_ = nullptr;
  fake::FakeCameraSource* camera_ = nullptr;
  fake::FakeTakeMovies movies_;
  fake::FakeClock clock_;
  RecordingSession::WallTime now_{std::chrono::seconds{1'795'167'667}};
  MainQueue main_;
  double tickInterval_ = 0;
  std::function<void()> tick_;
  std::unique_ptr<RecordingSession> session_;
};

TEST_F(RecordingSessionTest, aTakeIsWrittenAsAPackageThatOpens) {
  ASSERT_TRUE(record({.captureSystemAudio = true, .cameraMode = package::CameraMode::perspective}));
  screen_->show(100s);
  screen_->show(101s);
  now_ += 2.5s;
  ASSERT_TRUE(finish());
  EXPECT_EQ(std::get<state::Finished>(session_->state()).url, *session_->packageURL());
  const auto written = meta();
  EXPECT_EQ(written.version, 1);
  EXPECT_EQ(written.captureWidth, 1920);
  EXPECT_EQ(written.captureHeight, 1080);
  EXPECT_EQ(written.fps, 60);
  EXPECT_EQ(written.firstFramePTS, 100.0);
  EXPECT_EQ(written.duration, 2.5);
  EXPECT_TRUE(written.hasSystemAudio);
  EXPECT_FALSE(written.hasMicrophone);
  EXPECT_FALSE(written.interrupted);
  EXPECT_TRUE(written.cursorSeparated);
  EXPECT_EQ(written.cameraMode, package::CameraMode::perspective);
  EXPECT_EQ(session_->lastCaptureReport()->completeFrames, 2);
}

TEST_F(RecordingSessionTest, onlyTheUserMayReadAPackage) {
  ASSERT_TRUE(record());
  struct stat folder{};
  struct stat log{};
  ASSERT_EQ(stat(session_->packageURL()->c_str(), &folder), 0);
  ASSERT_EQ(stat((*session_->packageURL() / "events.jsonl").c_str(), &log), 0);
  EXPECT_EQ(folder.st_mode & 0777, 0700);
  EXPECT_EQ(log.st_mode & 0777, 0600);
}

TEST_F(RecordingSessionTest, aSecondStartKeepsTheRunningTake) {
  ASSERT_TRUE(record());
  const auto package = session_->packageURL();
  session_->start({.captureMicrophone = true});
  EXPECT_TRUE(is<state::Recording>());
  EXPECT_EQ(session_->packageURL(), package);
  EXPECT_THAT(packages(), SizeIs(1));
}

TEST_F(RecordingSessionTest, aStopWhilePreparingDoesNothing) {
  session_->start({});
  ASSERT_TRUE(is<state::Preparing>());
  session_->stop();
  EXPECT_TRUE(becomes<state::Recording>());
}

TEST_F(RecordingSessionTest, aScreenThatCannotBeHadLeavesNothingOnDisk) {
  screen_->fail(BackendError{"连接不上"});
  session_->start({});
  ASSERT_TRUE(becomes<state::Failed>());
  EXPECT_EQ(failureMessage(), "连接不上");
  EXPECT_EQ(session_->packageURL(), std::nullopt);
  EXPECT_THAT(packages(), IsEmpty());
}

TEST_F(RecordingSessionTest, aMachineWithoutADisplayFails) {
  geometry_->setDisplays({});
  session_->start({});
  ASSERT_TRUE(becomes<state::Failed>());
  EXPECT_EQ(failureMessage(), "没有可用的显示器");
}

TEST_F(RecordingSessionTest, aLibraryThatCannotBeWrittenIsNamed) {
  folder_.put("file", "");
  library_.setRoot(folder_ / "file/takes");
  session_->start({});
  ASSERT_TRUE(becomes<state::Failed>());
  EXPECT_EQ(failureMessage(), "无法写入录制目录：" + (folder_ / "file/takes").string() +
                                  "。检查路径是否存在或有写权限。");
}

TEST_F(RecordingSessionTest, twoTakesOfOneSecondHaveTwoPackages) {
  ASSERT_TRUE(record());
  ASSERT_TRUE(finish());
  const auto first = session_->packageURL();
  ASSERT_TRUE(record());
  EXPECT_NE(session_->packageURL(), first);
  ASSERT_TRUE(finish());
  EXPECT_THAT(packages(), SizeIs(2));
}

TEST_F(RecordingSessionTest, aMicrophoneThatFailsAtTheStartIsOnlyMissing) {
  microphone_->setDeviceName({});
  ASSERT_TRUE(record({.captureMicrophone = true}));
  EXPECT_EQ(session_->micWarning(), "麦克风启动失败：找不到可用的麦克风。已按静音继续录制。");
  ASSERT_TRUE(finish());
  EXPECT_FALSE(meta().hasMicrophone);
  EXPECT_FALSE(meta().interrupted);
}

TEST_F(RecordingSessionTest, aCameraThatFailsAtTheStartIsOnlyMissing) {
  camera_->setDevices({});
  ASSERT_TRUE(record({.captureCamera = true}));
  EXPECT_EQ(session_->cameraWarning(),
            "摄像头启动失败：找不到可用的摄像头。已按无画中画继续录制。");
  ASSERT_TRUE(finish());
  EXPECT_FALSE(meta().hasCamera);
}

TEST_F(RecordingSessionTest, aMicrophoneThatFailsOnTheWayMarksTheTake) {
  ASSERT_TRUE(record({.captureMicrophone = true}));
  hear(*microphone_, 100s);
  microphone_->end(BackendError{"麦克风已断开"});
  EXPECT_TRUE(is<state::Recording>());
  ASSERT_TRUE(finish());
  EXPECT_TRUE(meta().hasMicrophone);
  EXPECT_TRUE(meta().interrupted);
  EXPECT_EQ(meta().interruptReason, "麦克风：麦克风已断开");
  EXPECT_EQ(meta().micFirstSamplePTS, 100.0);
  EXPECT_EQ(session_->cameraWarning(), "麦克风：麦克风已断开。画面已保存，但这部分素材不完整。");
}

TEST_F(RecordingSessionTest, cameraAndMicrophoneFailuresStandSideBySide) {
  ASSERT_TRUE(record({.captureMicrophone = true, .captureCamera = true}));
  camera_->show(100s, 0x808080);
  camera_->end(BackendError{"已拔出"});
  microphone_->end(BackendError{"已断开"});
  ASSERT_TRUE(finish());
  EXPECT_EQ(meta().interruptReason, "麦克风：已断开；摄像头：已拔出");
  EXPECT_EQ(meta().cameraFirstFramePTS, 100.0);
  EXPECT_EQ(meta().cameraFirstLitPTS, 100.0);
}

TEST_F(RecordingSessionTest, anInterruptionEndsTheTakeByTheOrdinaryPath) {
  ASSERT_TRUE(record());
  screen_->show(100s);
  screen_->end({.cause = ScreenStreamEnd::Cause::other, .message = "显示服务器断开"});
  ASSERT_TRUE(becomes<state::Finished>());
  EXPECT_TRUE(meta().interrupted);
  EXPECT_EQ(meta().interruptReason, "屏幕捕获意外停止：显示服务器断开");
  EXPECT_EQ(session_->interruptNotice(), "屏幕捕获意外停止：显示服务器断开");
}

TEST_F(RecordingSessionTest, aMicrophoneFileThatCannotBeWrittenMarksTheTake) {
  ASSERT_TRUE(record({.captureMicrophone = true}));
  hear(*microphone_, 100s);
  movies_.breakMovie("mic.m4a", "磁盘已满");
  hear(*microphone_, 101s);
  EXPECT_TRUE(is<state::Recording>());
  ASSERT_TRUE(finish());
  EXPECT_TRUE(meta().hasMicrophone);
  EXPECT_EQ(meta().interruptReason, "麦克风：磁盘已满");
}

TEST_F(RecordingSessionTest, aMovieThatCannotBeWrittenEndsTheTake) {
  ASSERT_TRUE(record());
  screen_->show(100s);
  movies_.breakMovie("screen.mov", "磁盘已满");
  screen_->show(101s);
  ASSERT_TRUE(becomes<state::Finished>());
  EXPECT_TRUE(meta().interrupted);
  EXPECT_EQ(meta().interruptReason, "录制中断：磁盘已满");
}

TEST_F(RecordingSessionTest, aTakeWithoutACameraKeepsNothingOfTheCameraOfTheTakeBefore) {
  ASSERT_TRUE(record({.captureMicrophone = true, .captureCamera = true}));
  hear(*microphone_, 100s);
  camera_->show(100s, 0x808080);
  ASSERT_TRUE(finish());
  EXPECT_EQ(meta().cameraFirstFramePTS, 100.0);
  now_ += 1s;
  ASSERT_TRUE(record());
  ASSERT_TRUE(finish());
  EXPECT_EQ(meta().cameraFirstFramePTS, std::nullopt);
  EXPECT_EQ(meta().micFirstSamplePTS, std::nullopt);
}

TEST_F(RecordingSessionTest, aLitFrameOfAnEarlierTakeDoesNotShiftTheCamera) {
  ASSERT_TRUE(record({.captureCamera = true}));
  camera_->show(100s, 0x808080);
  ASSERT_TRUE(finish());
  EXPECT_EQ(meta().cameraFirstLitPTS, 100.0);
  now_ += 1s;
  ASSERT_TRUE(record({.captureCamera = true}));
  camera_->show(200s, 0x808080);
  ASSERT_TRUE(finish());
  EXPECT_EQ(meta().cameraFirstFramePTS, 200.0);
  EXPECT_EQ(meta().cameraFirstLitPTS, std::nullopt);
}

TEST_F(RecordingSessionTest, anInterruptionAndASideFailureGiveOneReason) {
  ASSERT_TRUE(record({.captureMicrophone = true}));
  microphone_->end(BackendError{"已断开"});
  screen_->end({.cause = ScreenStreamEnd::Cause::other, .message = "显示服务器断开"});
  ASSERT_TRUE(becomes<state::Finished>());
  EXPECT_EQ(meta().interruptReason, "屏幕捕获意外停止：显示服务器断开；麦克风：已断开");
}

TEST_F(RecordingSessionTest, anInterruptionFromOutsideHasItsReason) {
  ASSERT_TRUE(record());
  session_->interrupt("收到终止信号");
  ASSERT_TRUE(becomes<state::Finished>());
  EXPECT_EQ(meta().interruptReason, "收到终止信号");
}

TEST_F(RecordingSessionTest, anInterruptionWhilePreparingEndsTheTakeOnceItRuns) {
  session_->start({});
  session_->interrupt("收到终止信号");
  ASSERT_TRUE(becomes<state::Finished>());
  EXPECT_TRUE(meta().interrupted);
}

TEST_F(RecordingSessionTest, anInterruptionAfterTheEndIsTooLate) {
  ASSERT_TRUE(record());
  ASSERT_TRUE(finish());
  session_->interrupt("收到终止信号");
  bool isThrough = false;
  main_.poster()([&] { isThrough = true; });
  ASSERT_TRUE(main_.runUntil([&] { return isThrough; }));
  EXPECT_EQ(session_->interruptNotice(), std::nullopt);
}

TEST_F(RecordingSessionTest, aTakeOfAWindowHasTheScopeOfAWindow) {
  geometry_->putWindow({.id = 7, .title = {}, .owner = {}, .frame = {10, 10, 400, 300}});
  ASSERT_TRUE(record({.scope = {CaptureScope::Window{7}}}));
  ASSERT_TRUE(finish());
  EXPECT_EQ(meta().source, RecordingMeta::Source::display);
  EXPECT_EQ(meta().scope, CaptureScope{CaptureScope::Window{7}});
}

TEST_F(RecordingSessionTest, marksAreNumberedAnewInEachTake) {
  ShortcutSettings shortcuts{defaults_};
  for (int take = 0; take < 2; ++take) {
    ASSERT_TRUE(record({.shortcuts = &shortcuts}));
    EXPECT_EQ(session_->lastMark(), std::nullopt);
    hotKeys_->press(defaultZoomIn);
    ASSERT_TRUE(main_.runUntil([this] { return session_->lastMark().has_value(); }));
    EXPECT_EQ(session_->lastMark(), (MarkPulse{.kind = Kind::zoomIn, .seq = 1}));
    EXPECT_TRUE(session_->isZoomedIn());
    hotKeys_->press(defaultZoomIn);
    ASSERT_TRUE(main_.runUntil([this] { return session_->lastMark()->seq == 2; }));
    EXPECT_TRUE(session_->isZoomedIn());
    hotKeys_->press(defaultZoomOut);
    ASSERT_TRUE(main_.runUntil([this] { return session_->lastMark()->seq == 3; }));
    EXPECT_FALSE(session_->isZoomedIn());
    ASSERT_TRUE(finish());
    EXPECT_EQ(hotKeys_->heldCount(), 0U);
  }
}

TEST_F(RecordingSessionTest, takenHotKeysAreNamedAndTheTakeGoesOn) {
  ShortcutSettings shortcuts{defaults_};
  hotKeys_->occupy(defaultZoomIn);
  hotKeys_->occupy(defaultZoomOut);
  ASSERT_TRUE(record({.shortcuts = &shortcuts}));
  EXPECT_EQ(session_->hotkeyWarning(),
            "放大标记、还原标记的快捷键注册失败，可能已被其它 App 占用。换一个组合再试。");
}

TEST_F(RecordingSessionTest, twoEqualShortcutsLeaveTheSecondOut) {
  ShortcutSettings shortcuts{defaults_};
  shortcuts.setZoomOut(shortcuts.zoomIn());
  ASSERT_TRUE(record({.shortcuts = &shortcuts}));
  EXPECT_THAT(*session_->hotkeyWarning(), StartsWith("还原标记的快捷键"));
}

TEST_F(RecordingSessionTest, withoutManualMarksNoKeyIsHeld) {
  ShortcutSettings shortcuts{defaults_};
  shortcuts.setManualMarksEnabled(false);
  ASSERT_TRUE(record({.shortcuts = &shortcuts}));
  EXPECT_EQ(hotKeys_->heldCount(), 0U);
}

TEST_F(RecordingSessionTest, theTickerKeepsTheCountersUpToDate) {
  ASSERT_TRUE(record());
  EXPECT_EQ(tickInterval_, 0.1);
  input_->setPointer(ScreenPoint{.x = 960, .y = 540});
  input_->send(ButtonChange{.time = 1000, .isPressed = true, .clickCount = 1});
  now_ += 3s;
  int changes = 0;
  const auto subscription = session_->onChange([&] { ++changes; });
  ASSERT_TRUE(main_.runUntil([this] {
    main_.poster()([] {});
    tick_();
    return session_->markerCount() == 1;
  }));
  EXPECT_EQ(session_->elapsed(), 3.0);
  const int before = changes;
  tick_();
  EXPECT_EQ(changes, before);
}

TEST_F(RecordingSessionTest, withoutAPictureTheEventsStandFromTheFirstOn) {
  ASSERT_TRUE(record());
  input_->setPointer(ScreenPoint{.x = 960, .y = 540});
  input_->send(ButtonChange{.time = 1000, .isPressed = true, .clickCount = 1});
  input_->send(ButtonChange{.time = 1001.5, .isPressed = false});
  ASSERT_TRUE(finish());
  EXPECT_EQ(meta().firstFramePTS, std::nullopt);
  const auto project = package::RecordingProject::load(*session_->packageURL(), {});
  ASSERT_TRUE(project);
  ASSERT_THAT(project->events, SizeIs(2));
  EXPECT_EQ(project->events[0].t, 0.0);
  EXPECT_EQ(project->events[1].t, 1.5);
}

TEST_F(RecordingSessionTest, aMetaThatCannotBeWrittenFailsTheTakeAndKeepsItsMedia) {
  ASSERT_TRUE(record());
  screen_->show(100s);
  std::filesystem::create_directory(*session_->packageURL() / "meta.json");
  folder_.put("takes/" + session_->packageURL()->filename().string() + "/meta.json/x", "");
  session_->stop();
  ASSERT_TRUE(becomes<state::Failed>());
  EXPECT_THAT(failureMessage(), StartsWith("录制素材已保存，但索引文件写入失败，这段录制打不开："));
  EXPECT_TRUE(std::filesystem::exists(*session_->packageURL() / "screen.mov"));
}

TEST_F(RecordingSessionTest, aStateOfFailureIsNoEndOfTheSession) {
  screen_->fail(BackendError{"连接不上"});
  session_->start({});
  ASSERT_TRUE(becomes<state::Failed>());
  screen_->fail({});
  ASSERT_TRUE(record());
  EXPECT_TRUE(finish());
}

TEST_F(RecordingSessionTest, aSessionThatIsDestroyedInATakeEndsItsStreams) {
  ASSERT_TRUE(record({.captureMicrophone = true, .captureCamera = true}));
  session_.reset();
  EXPECT_EQ(screen_->openCount(), 0);
  EXPECT_EQ(microphone_->openCount(), 0);
  EXPECT_EQ(camera_->openCount(), 0);
  EXPECT_TRUE(movies_.movie("screen.mov")->isFinished);
}

}  // namespace
}  // namespace vesk::capture
