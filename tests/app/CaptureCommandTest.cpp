#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "app/CameraListCommand.h"
#include "app/HotKeysCommand.h"
#include "app/SmokeRecordCommand.h"
#include "app/StaticTailCommand.h"
#include "app/WindowResizeCommand.h"
#include "capture/fake/FakeCameraSource.h"
#include "capture/fake/FakeDisplayGeometry.h"
#include "capture/fake/FakeFrontApplication.h"
#include "capture/fake/FakeHotKeys.h"
#include "capture/fake/FakeInputSource.h"
#include "capture/fake/FakeScreenSource.h"
#include "capture/fake/FakeSoundSource.h"
#include "package/TemporaryDirectory.h"
#include "package/UserDefaults.h"

namespace vesk::app {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// A keyboard that somebody plays: its combinations reach those who hold them.
class PlayedKeyboard final : public capture::InputInjector {
 public:
  explicit PlayedKeyboard(capture::fake::FakeHotKeys& keys) : keys_{keys} {}
  bool movePointer(const capture::ScreenPoint&) override { return false; }
  bool press(const capture::Shortcut& shortcut) override {
    keys_.press(shortcut);
    return true;
  }

 private:
  capture::fake::FakeHotKeys& keys_;
};

/// Commands over fakes of the machine.
class CaptureCommand : public testing::Test {
 protected:
  CaptureCommand() {
    library_.setRoot(folder_ / "takes");
    auto hotKeys = std::make_unique<capture::fake::FakeHotKeys>();
    auto geometry = std::make_unique<capture::fake::FakeDisplayGeometry>();
    hotKeys_ = hotKeys.get();
    geometry_ = geometry.get();
    auto injector = std::make_unique<PlayedKeyboard>(*hotKeys);
    capture::CaptureBackends backends{
        .name = "fake",
        .capabilities = {.hotKeys = true},
        .geometry = std::move(geometry),
        .screen = std::make_unique<capture::fake::FakeScreenSource>(),
        .input = std::make_unique<capture::fake::FakeInputSource>(),
        .hotKeys = std::move(hotKeys),
        .frontApplication = std::make_unique<capture::fake::FakeFrontApplication>(),
        .systemSound = std::make_unique<capture::fake::FakeSoundSource>(2),
        .microphone = std::make_unique<capture::fake::FakeSoundSource>(1),
        .camera = std::make_unique<capture::fake::FakeCameraSource>(),
        .injector = std::move(injector),
        .keyboardLayout = [](capture::KeyCode) { return std::string{"1"}; }};
    stage_ = *CaptureStage::open([&] { return std::move(backends); }, library_,
                                 [](const auto&) { return media::plainestCaptureEncoder(); });
  }

  /// What a command prints, and its exit code behind it.
  std::string run(int (*command)(const CommandContext&), std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "vesk");
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const out = open_memstream(&text, &size);
    const int code = command({.commandLine = CommandLine{arguments},
                              .out = out,
                              .makeCaptureStage = [this] { return makeStage(); },
                              .openCameras = [this] { return std::move(cameras_); }});
    std::fclose(out);
    std::string printed{text, size};
    std::free(text);  // NOLINT: the stream's memory is the caller's
    return printed + "exit " + std::to_string(code);
  }
  std::expected<std::unique_ptr<CaptureStage>, std::string> makeStage() {
    if (!stage_) return std::unexpected("没有桌面");
    return std::move(stage_);
  }

  package::TemporaryDirectory folder_;
  package::UserDefaults defaults_{folder_ / "defaults.json"};
  package::RecordingLibrary library_{
      {.defaults = defaults_,
       .trashFolder = package::TrashFolder{package::TrashFolder::currentSurroundings()},
       .makeThumbnail = [](const auto&) { return std::nullopt; },
       .askForFolder = [](const auto&) { return std::nullopt; },
       .now = [] { return package::Timestamp{}; }}};
  capture::fake::FakeHotKeys* hotKeys_ = nullptr;
  capture::fake::FakeDisplayGeometry* geometry_ = nullptr;
  std::unique_ptr<capture::CameraSource> cameras_ =
      std::make_unique<capture::fake::FakeCameraSource>();
  std::unique_ptr<CaptureStage> stage_;
};

TEST_F(CaptureCommand, hotKeysThatAreHeldAndPressedPass) {
  const auto printed =
      run(diagnoseHotKeys, {"--diag-hotkeys", "2", "--synthesize", "--default-keys"});
  EXPECT_THAT(printed, StartsWith("=== 全局热键 ===\n  沙盒：否   事件循环：NSApplication\n"
                                  "  辅助功能授权：是\n"));
  EXPECT_THAT(printed, HasSubstr("     放大 ⌥1\n"));
  EXPECT_THAT(printed, HasSubstr("代码默认值（--default-keys，不读 UserDefaults）"));
  EXPECT_THAT(printed, HasSubstr("放大 收到（第 1 次）"));
  EXPECT_THAT(printed, EndsWith("  收到  放大 1 次   还原 1 次\n  ✓ 全局热键工作正常\nexit 0"));
}

TEST_F(CaptureCommand, hotKeysThatNobodyPressesFail) {
  const auto printed =
      run(diagnoseHotKeys, {"--diag-hotkeys", "0.1", "--default-keys", "--runloop"});
  EXPECT_THAT(printed, HasSubstr("裸 RunLoop（对照组）"));
  EXPECT_THAT(printed, EndsWith("  ✗ 一次都没收到。\nexit 1"));
}

TEST_F(CaptureCommand, hotKeysThatAreTakenAreNamed) {
  hotKeys_->occupy(capture::defaultZoomOut);
  EXPECT_THAT(run(diagnoseHotKeys, {"--diag-hotkeys", "1", "--default-keys"}),
              EndsWith("  ✗ 注册失败：还原\n     （通常是被别的 App "
                       "占用了；沙盒下失败则说明这条路走不通）\nexit 1"));
}

TEST_F(CaptureCommand, aMalformedRegionPrintsItsForm) {
  EXPECT_EQ(run(smokeRecord, {"--smoke-record", "region:1,2"}),
            "region 格式：region:x,y,w,h\nexit 1");
}

TEST_F(CaptureCommand, withoutADesktopARecordingSaysSo) {
  stage_.reset();
  EXPECT_THAT(run(smokeRecord, {"--smoke-record", "display"}),
              EndsWith("✗ 启动失败：没有桌面\nexit 1"));
  EXPECT_THAT(run(diagnoseStaticTail, {"--diag-static-tail", "1"}),
              EndsWith("  ✗ 启动失败：没有桌面\nexit 1"));
}

TEST_F(CaptureCommand, aWindowThatIsNotThereListsThoseThatAre) {
  geometry_->putWindow({.id = 1,
                        .title = "a",
                        .owner = capture::ScreenWindow::Owner{.applicationID = "xterm",
                                                              .applicationName = "XTerm",
                                                              .processID = 1},
                        .frame = {0, 0, 400, 300}});
  EXPECT_THAT(run(diagnoseWindowResize, {"--diag-window-resize", "Firefox"}),
              EndsWith("找不到 App 名含「Firefox」的窗口。可选：XTerm\nexit 1"));
}

TEST_F(CaptureCommand, camerasAreListed) {
  EXPECT_EQ(run(listCameras, {"--camera-check"}),
            "摄像头权限：已授权\n可用设备 1 个：\n  · 测试摄像头  [Fake]\nexit 0");
}

}  // namespace
}  // namespace vesk::app
