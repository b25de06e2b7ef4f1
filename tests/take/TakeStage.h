#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "app/CaptureStage.h"
#include "capture/pipewire/SoundGenerator.h"
#include "capture/pipewire/TestSoundServer.h"
#include "capture/pipewire/VirtualCamera.h"
#include "capture/pipewire/VirtualSink.h"
#include "capture/x11/PaintingClient.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/TestUser.h"
#include "package/RecordingLibrary.h"
#include "package/RecordingProject.h"
#include "package/TemporaryDirectory.h"
#include "package/UserDefaults.h"

namespace vesk::take {

/// A desktop of the test's own with a window manager, somebody at its mouse and keyboard, a tone
/// that is played, a microphone that hears another one, and a camera that sees green; and the
/// program's session on top of it.
class TakeStage {
 public:
  static constexpr int width = 1280;
  static constexpr int height = 720;
  static constexpr double playedTone = 1000;
  static constexpr double spokenTone = 440;

  /// What the devices make of the time.
  struct Devices {
    capture::pipewire::test::Waveform played = capture::pipewire::test::tone(playedTone);
    capture::pipewire::test::Waveform spoken = capture::pipewire::test::tone(spokenTone);
    capture::pipewire::test::VirtualCamera::Paint seen = paintGreen;
  };

  TakeStage() : TakeStage{Devices{}} {}
  /// Throws when the desktop cannot be set up.
  explicit TakeStage(Devices devices);
  TakeStage(const TakeStage&) = delete;
  TakeStage& operator=(const TakeStage&) = delete;
  ~TakeStage();

  static void paintGreen(std::span<std::uint8_t> bytes, media::HostTime taken);

  capture::RecordingSession& session() { return stage_->session(); }
  /// Starts a take; true when it is being recorded.
  bool record(const capture::RecordingSession::Order& order);
  /// Lets time go by, in which the session hears of what happens.
  void wait(std::chrono::duration<double> time) { stage_->loop().runFor(time); }
  bool waitUntil(const std::function<bool()>& condition);
  /// Ends the take; true when it has become a package.
  bool finish();
  bool isFinished();
  /// The package of the last take; nothing when it does not open.
  std::optional<package::RecordingProject> project();
  /// Runs the program's own export of the package; nothing when it fails.
  std::optional<std::filesystem::path> exported();
  std::uint32_t displayID();

  package::TemporaryDirectory folder_;
  capture::x11::test::TestDisplay display_{
      {.width = width, .height = height, .hasWindowManager = true, .arguments = {}}};
  capture::pipewire::test::TestSoundServer soundServer_;
  capture::x11::test::TestUser user_{display_.connection()};
  capture::x11::test::PaintingClient painter_;
  std::unique_ptr<capture::pipewire::test::VirtualSink> sink_;
  std::unique_ptr<capture::pipewire::test::SoundGenerator> player_;
  std::unique_ptr<capture::pipewire::test::SoundGenerator> microphone_;
  std::unique_ptr<capture::pipewire::test::VirtualCamera> camera_;
  package::UserDefaults defaults_{folder_ / "defaults.json"};
  package::RecordingLibrary library_;
  std::unique_ptr<app::CaptureStage> stage_;
};

}  // namespace vesk::take
