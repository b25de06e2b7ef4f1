#include "take/TakeStage.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "app/DesktopBackends.h"
#include "app/ExportCommand.h"
#include "media/CaptureEncoder.h"

namespace vesk::take {
namespace {

namespace state = capture::state;
using capture::pipewire::test::SoundGenerator;
using capture::pipewire::test::VirtualCamera;
using capture::pipewire::test::VirtualSink;
using namespace std::chrono_literals;

constexpr std::chrono::duration<double> patience = 20s;

/// This process is on the test's desktop from now on.
void enter(const capture::x11::test::TestDisplay& display,
           const capture::pipewire::test::TestSoundServer& soundServer) {
  setenv("DISPLAY", display.name().c_str(), 1);  // NOLINT: nobody reads variables meanwhile
  for (const auto& variable : soundServer.environment()) {
    const auto equals = variable.find('=');
    setenv(variable.substr(0, equals).c_str(),  // NOLINT: likewise
           variable.substr(equals + 1).c_str(), 1);
  }
}

package::RecordingLibrary::Surroundings surroundings(package::UserDefaults& defaults) {
  return {.defaults = defaults,
          .trashFolder = package::TrashFolder{package::TrashFolder::currentSurroundings()},
          .makeThumbnail = [](const auto&) { return std::nullopt; },
          .askForFolder = [](const auto&) { return std::nullopt; },
          .now = [] { return package::Timestamp{}; }};
}

}  // namespace

TakeStage::TakeStage(Devices devices)
    : painter_{display_.name(), capture::x11::test::PaintingClient::Process::another},
      library_{surroundings(defaults_)} {
  enter(display_, soundServer_);
  const auto remote = soundServer_.remote();
  sink_ = std::make_unique<VirtualSink>(remote, "loudspeaker", "测试扬声器");
  soundServer_.setDefaultSink("loudspeaker");
  player_ = std::make_unique<SoundGenerator>(
      remote, SoundGenerator::Player{.sinkName = "loudspeaker"}, std::move(devices.played));
  microphone_ = std::make_unique<SoundGenerator>(
      remote, SoundGenerator::Microphone{.name = "microphone", .description = "测试麦克风"},
      std::move(devices.spoken));
  camera_ = std::make_unique<VirtualCamera>(
      remote, VirtualCamera::Options{.name = "camera", .description = "测试摄像头"},
      std::move(devices.seen));
  library_.setRoot(folder_ / "takes");
  auto stage = app::CaptureStage::open(app::openDesktopBackends, library_,
                                       [](const auto&) { return media::plainestCaptureEncoder(); });
  if (!stage) throw std::runtime_error(stage.error());
  stage_ = *std::move(stage);
}

void TakeStage::paintGreen(std::span<std::uint8_t> bytes, media::HostTime) {
  constexpr std::size_t green = 1;
  constexpr std::size_t bytesPerPixel = 4;
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = i % bytesPerPixel == green ? 220 : 20;
}

TakeStage::~TakeStage() = default;

bool TakeStage::waitUntil(const std::function<bool()>& condition) {
  return stage_->loop().runUntil(condition, patience);
}

bool TakeStage::record(const capture::RecordingSession::Order& order) {
  session().start(order);
  return waitUntil([&] { return std::holds_alternative<state::Recording>(session().state()); });
}

bool TakeStage::isFinished() {
  return std::holds_alternative<state::Finished>(session().state());
}

bool TakeStage::finish() {
  session().stop();
  return waitUntil([&] { return isFinished(); });
}

std::optional<package::RecordingProject> TakeStage::project() {
  auto loaded = package::RecordingProject::load(*session().packageURL(), {});
  return loaded ? std::optional{*std::move(loaded)} : std::nullopt;
}

std::optional<std::filesystem::path> TakeStage::exported() {
  const auto movie = folder_ / "movie.mp4";
  const std::string package = session().packageURL()->string();
  const std::string output = movie.string();
  const std::vector<const char*> arguments{"vesk", "--export", output.c_str(), "--package",
                                           package.c_str()};
  std::FILE* const out = std::fopen((folder_ / "export.txt").c_str(), "w");
  const int code =
      app::exportMovie({.commandLine = app::CommandLine{arguments}, .out = out, .openCameras = {}});
  std::fclose(out);
  return code == 0 ? std::optional{movie} : std::nullopt;
}

std::uint32_t TakeStage::displayID() {
  return stage_->backends().geometry->displays().front().id;
}

}  // namespace vesk::take
