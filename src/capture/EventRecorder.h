#pragma once

#include <atomic>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "capture/CaptureRectangle.h"
#include "capture/Clock.h"
#include "capture/DisplayGeometry.h"
#include "capture/EventLogWriter.h"
#include "capture/FrontApplication.h"
#include "capture/HeldKeys.h"
#include "capture/InputSource.h"
#include "capture/Listening.h"
#include "capture/PostToMain.h"
#include "capture/SerialQueue.h"
#include "package/CaptureScope.h"
#include "package/PackageError.h"
#include "package/RecordedEvent.h"

namespace vesk::capture {

/// Logs the user's input during a take into "events.jsonl": what the editor needs to draw the
/// cursor and to infer the camera's motion. One is reused for every take of a session.
///
/// Times and positions are taken on the thread on which an event arrives and handed by value to a
/// queue that owns the log, so that a slow disk shifts neither. Lines stand in the order in which
/// they reached the queue, which is not strictly that of `t`.
class EventRecorder {
 public:
  using Kind = package::RecordedEvent::Kind;
  /// Begins to call a function at a steady rate, as a `PointerSampler` does.
  using StartSampler =
      std::function<std::unique_ptr<Listening>(std::function<void(double now)> sample)>;

  /// What the recorder works with; all of it must outlive the recorder.
  struct Seams {
    InputSource& input;
    FrontApplication& frontApplication;
    const DisplayGeometry& geometry;
    const Clock& clock;
    StartSampler startSampler;
    PostToMain postToMain;
  };

  explicit EventRecorder(Seams seams);
  EventRecorder(const EventRecorder&) = delete;
  EventRecorder& operator=(const EventRecorder&) = delete;
  /// Stops.
  ~EventRecorder();

  /// Called on the main thread after each manual mark.
  std::function<void(Kind)> onCameraMark;
  /// Called with the position of each press in the picture, on the input's thread. To be set while
  /// no take runs.
  std::function<void(PicturePoint)> onClick;

  // The following are for the main thread.

  /// Begins to log. An input that cannot be listened to is only missing from the log.
  /// @param target the display of the take, for a scope that cannot be found.
  /// @param file is overwritten; only the user may read it.
  std::expected<void, package::PackageError> start(const Display& target,
                                                   const package::CaptureScope& scope,
                                                   const std::filesystem::path& file,
                                                   bool captureKeyboard);

  /// Logs a manual mark, `zoomIn` or `zoomOut`, at the pointer, or without a position when that is
  /// outside the picture. Other kinds and a mark between takes have no effect.
  void mark(Kind kind);

  /// Ends the log. Returns when it is complete on disk.
  void stop();

  // The following are for any thread.

  /// Tells the time of the take's first frame on the clock. Only the first call of a take counts.
  void setTimeOrigin(double seconds);

  // What has been logged; the marks are counted over all takes, the others from the last start.
  std::int64_t clickCount() const { return clickCount_; }
  std::int64_t eventCount() const { return eventCount_; }
  std::int64_t zoomInCount() const { return zoomInCount_; }
  std::int64_t zoomOutCount() const { return zoomOutCount_; }

 private:
  bool isRunning() const { return rectangle_.has_value(); }
  void listen(bool captureKeyboard);
  std::optional<PicturePoint> pointerInPicture();
  void receive(const InputEvent& event);
  void receiveButton(const ButtonChange& change);
  void receiveScroll(const ScrollStep& step);
  void receiveKey(const KeyPress& key);
  void receiveFrontApplication(const FrontApplication::Name& name);
  void samplePointer(double now);
  void sampleSecureInput(double now);
  void post(package::RecordedEvent event);

  // On the queue.
  void beginLog(EventLogFile file, bool isSecureInput, FrontApplication::Name app);
  void append(package::RecordedEvent event);
  void write(package::RecordedEvent event);
  void endLog();

  Seams seams_;
  std::optional<CaptureRectangle> rectangle_;  ///< while a take runs

  // Of the sampler's thread.
  std::optional<PicturePoint> lastSampled_;
  bool lastSecureInput_ = false;

  // Of the queue.
  std::optional<EventLogWriter> log_;
  HeldKeys heldKeys_{false};
  FrontApplication::Name lastApp_;

  std::atomic<std::int64_t> clickCount_ = 0;
  std::atomic<std::int64_t> eventCount_ = 0;
  std::atomic<std::int64_t> zoomInCount_ = 0;
  std::atomic<std::int64_t> zoomOutCount_ = 0;

  SerialQueue queue_{"vesk.events"};

  // Whoever calls back; they end before what they touch.
  std::unique_ptr<Listening> inputListening_;
  std::unique_ptr<Listening> applicationListening_;
  std::unique_ptr<Listening> sampler_;
};

}  // namespace vesk::capture
