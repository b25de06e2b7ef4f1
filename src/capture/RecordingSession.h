#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "capture/CameraRecorder.h"
#include "capture/CaptureBackends.h"
#include "capture/Clock.h"
#include "capture/EventRecorder.h"
#include "capture/HotKeyManager.h"
#include "capture/MicrophoneRecorder.h"
#include "capture/PostToMain.h"
#include "capture/RecordingState.h"
#include "capture/ScreenCaptureEngine.h"
#include "capture/SerialQueue.h"
#include "capture/ShortcutSettings.h"
#include "capture/TakeMovie.h"
#include "package/ChangeSignal.h"
#include "package/RecordingLibrary.h"
#include "package/RecordingMeta.h"

namespace vesk::capture {

/// Drives a take from the moment at which the user asks for it to the moment at which "meta.json"
/// stands on disk. Everything that waits for devices and encoders runs on a queue of its own, so
/// that the user interface never does. To be used on the main thread.
class RecordingSession {
 public:
  using State = RecordingState;
  using WallTime = std::chrono::sys_time<std::chrono::duration<double>>;
  /// Calls a function on the main thread at this interval for as long as the result lives.
  using StartTicker =
      std::function<std::unique_ptr<Listening>(double seconds, std::function<void()> tick)>;

  struct Surroundings {
    CaptureBackends& backends;                 ///< outlive the session
    const package::RecordingLibrary& library;  ///< outlives the session
    const Clock& clock;                        ///< outlives the session
    std::function<WallTime()> now;
    EventRecorder::StartSampler startSampler;
    StartTicker startTicker;
    PostToMain postToMain;
    ScreenCaptureEngine::ChooseEncoder chooseEncoder;
    OpenTakeMovie openMovie;
  };

  /// What to record.
  struct Order {
    std::optional<std::uint32_t> displayID;  ///< of a scope that names none
    bool captureKeyboard = false;
    const ShortcutSettings* shortcuts = nullptr;  ///< null: no manual marks; read at the start only
    bool captureMicrophone = false;
    bool captureSystemAudio = false;
    package::CameraMode cameraMode = package::CameraMode::zoom;
    package::CaptureScope scope;
    bool captureCamera = false;
    std::optional<CameraDevice> cameraDevice;  ///< nothing: the first there is
  };

  explicit RecordingSession(Surroundings surroundings);
  RecordingSession(const RecordingSession&) = delete;
  RecordingSession& operator=(const RecordingSession&) = delete;
  /// Ends what runs without completing the package.
  ~RecordingSession();

  /// Begins a take, unless one runs. The state tells how that went.
  void start(const Order& order);
  /// Ends the take that is being recorded; otherwise does nothing. The state tells how that went.
  void stop();

  const State& state() const { return published_.state; }
  /// Seconds since the recording began.
  double elapsed() const { return published_.elapsed; }
  /// The report of the last stop.
  const std::optional<ScreenCaptureEngine::Report>& lastCaptureReport() const {
    return lastCaptureReport_;
  }
  std::int64_t markerCount() const { return published_.markerCount; }  ///< clicks
  std::int64_t zoomInCount() const { return published_.zoomInCount; }
  std::int64_t zoomOutCount() const { return published_.zoomOutCount; }
  const std::optional<MarkPulse>& lastMark() const { return published_.lastMark; }
  bool isZoomedIn() const { return published_.isZoomedIn; }
  // What the user is to know of the current or last take.
  const std::optional<std::string>& hotkeyWarning() const { return published_.hotkeyWarning; }
  const std::optional<std::string>& interruptNotice() const { return published_.interruptNotice; }
  const std::optional<std::string>& micWarning() const { return published_.micWarning; }
  const std::optional<std::string>& cameraWarning() const { return published_.cameraWarning; }
  /// The package of the current or last take.
  const std::optional<std::filesystem::path>& packageURL() const { return packageURL_; }
  const CameraRecorder& camera() const { return camera_; }

  /// Observes all of these. Called after a change, never when a value was only set again.
  package::ChangeSignal::Subscription onChange(package::ChangeSignal::Observer observer);

  /// Ends the take because it cannot go on, for this reason. On any thread.
  void interrupt(const std::string& reason);

 private:
  struct Published {
    State state = state::Idle{};
    double elapsed = 0;
    std::int64_t markerCount = 0;
    std::int64_t zoomInCount = 0;
    std::int64_t zoomOutCount = 0;
    std::optional<MarkPulse> lastMark;
    bool isZoomedIn = false;
    std::optional<std::string> hotkeyWarning;
    std::optional<std::string> interruptNotice;
    std::optional<std::string> micWarning;
    std::optional<std::string> cameraWarning;
    bool operator==(const Published&) const = default;
  };
  /// How the start of the streams went.
  struct Started {
    int pixelWidth = 0;
    int pixelHeight = 0;
    double scaleFactor = 1;
    bool hasMicrophone = false;
    bool hasCamera = false;
    std::optional<std::string> micWarning;
    std::optional<std::string> cameraWarning;
  };
  using Change = std::function<void(Published&)>;

  void publish(const Change& change);
  void onMain(std::function<void(RecordingSession&)> task);

  std::expected<void, std::string> prepare(const Order& order);
  void registerHotKeys(const ShortcutSettings& shortcuts);
  std::expected<Started, CaptureError> startStreams(const Order& order,
                                                    const std::filesystem::path& package);
  void begin(const Order& order, const Started& started);
  void failStart(const std::string& message);
  void finish(const ScreenCaptureEngine::Report& report);
  package::RecordingMeta completed(const ScreenCaptureEngine::Report& report) const;
  void reportSideStreams(package::RecordingMeta& meta);
  void fail(std::string message);
  void mark(package::RecordedEvent::Kind kind);
  void tick();

  Surroundings surroundings_;
  Published published_;
  package::ChangeSignal changed_;
  std::optional<ScreenCaptureEngine::Report> lastCaptureReport_;
  std::uint32_t displayID_ = 0;
  std::optional<WallTime> startedAt_;
  std::optional<std::filesystem::path> packageURL_;
  std::optional<package::RecordingMeta> meta_;
  /// What the main thread still has to hear finds the session by this, or finds it gone.
  std::shared_ptr<RecordingSession*> self_ = std::make_shared<RecordingSession*>(this);

  EventRecorder events_;
  HotKeyManager hotkeys_;
  MicrophoneRecorder mic_;
  CameraRecorder camera_;
  ScreenCaptureEngine engine_;
  std::unique_ptr<Listening> ticker_;
  SerialQueue work_{"vesk.session"};  ///< ends first, for it uses all of these
};

}  // namespace vesk::capture
