#include "capture/EventRecorder.h"

#include <fmt/format.h>

#include <utility>
#include <variant>

#include "capture/KeyCombo.h"
#include "package/Log.h"

namespace vesk::capture {
namespace {

using package::RecordedEvent;
using Kind = RecordedEvent::Kind;

/// A pointer that moved by no more than 0.0004 of the picture stands still.
constexpr double smallestStepSquared = 1.6e-07;

spdlog::logger& eventsLog() {
  return package::log(package::LogCategory::events);
}

package::OptionalText optionalText(const FrontApplication::Name& name) {
  return name ? package::OptionalText{*name} : std::nullopt;
}

/// An event at a position of the picture, or at none.
RecordedEvent eventAt(double t, Kind type, const std::optional<PicturePoint>& at) {
  RecordedEvent event{.t = t, .type = type};
  if (at) {
    event.x = at->x;
    event.y = at->y;
  }
  return event;
}

RecordedEvent pressEvent(const ButtonChange& press, const PicturePoint& at,
                         const FrontApplication::Name& app) {
  auto event = eventAt(press.time, Kind::click, at);
  event.button = press.button;
  event.clickCount = press.clickCount;
  event.app = optionalText(app);
  return event;
}

RecordedEvent releaseEvent(const ButtonChange& release, const PicturePoint& at) {
  auto event = eventAt(release.time, Kind::up, at);
  event.button = release.button;
  return event;
}

bool isStep(const PicturePoint& from, const PicturePoint& to) {
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  return dx * dx + dy * dy > smallestStepSquared;
}

std::string inWords(const std::optional<PicturePoint>& at) {
  return at ? fmt::format("({:.3f}, {:.3f})", at->x, at->y) : "nil";
}

}  // namespace

EventRecorder::EventRecorder(Seams seams) : seams_{std::move(seams)} {}

EventRecorder::~EventRecorder() {
  stop();
}

std::expected<void, package::PackageError> EventRecorder::start(const Display& target,
                                                                const package::CaptureScope& scope,
                                                                const std::filesystem::path& file,
                                                                bool captureKeyboard) {
  stop();
  auto logFile = EventLogFile::create(file);
  if (!logFile) return std::unexpected(logFile.error());
  rectangle_.emplace(scope, target, seams_.geometry, seams_.clock.now());
  lastSampled_.reset();
  lastSecureInput_ = seams_.input.isSecureInput();
  queue_.sync(
      [&] { beginLog(*std::move(logFile), lastSecureInput_, seams_.frontApplication.name()); });
  listen(captureKeyboard);
  sampler_ = seams_.startSampler([this](double now) { samplePointer(now); });
  eventsLog().info("event recorder started keyboard={}", captureKeyboard);
  return {};
}

void EventRecorder::mark(Kind kind) {
  if (!isRunning() || (kind != Kind::zoomIn && kind != Kind::zoomOut)) return;
  const auto at = pointerInPicture();
  auto event = eventAt(seams_.clock.now(), kind, at);
  event.app = optionalText(seams_.frontApplication.name());
  queue_.post([this, event = std::move(event), at, told = onCameraMark]() mutable {
    const Kind type = event.type;
    append(std::move(event));
    eventsLog().info("camera mark {} at {}", rawValue(type), inWords(at));
    if (told) seams_.postToMain([told = std::move(told), type] { told(type); });
  });
}

void EventRecorder::stop() {
  if (!isRunning()) return;
  sampler_.reset();
  inputListening_.reset();
  applicationListening_.reset();
  // Keys that were typed since the last sample may be a secret.
  sampleSecureInput(seams_.clock.now());
  queue_.sync([this] { endLog(); });
  rectangle_.reset();
  eventsLog().info("event recorder stopped events={} clicks={}", eventCount(), clickCount());
}

void EventRecorder::setTimeOrigin(double seconds) {
  queue_.post([this, seconds] {
    const auto flushed = log_ ? log_->setTimeOrigin(seconds) : std::nullopt;
    if (flushed) eventsLog().info("time origin set pts={:f} flushed={}", seconds, *flushed);
  });
}

void EventRecorder::listen(bool captureKeyboard) {
  auto input =
      seams_.input.listen(captureKeyboard, [this](const InputEvent& event) { receive(event); });
  auto application = seams_.frontApplication.listen(
      [this](const FrontApplication::Name& name) { receiveFrontApplication(name); });
  if (!input) eventsLog().error("input not logged: {}", input.error().message);
  if (!application) eventsLog().error("applications not logged: {}", application.error().message);
  if (input) inputListening_ = *std::move(input);
  if (application) applicationListening_ = *std::move(application);
}

// The event's own position may lie in the coordinates of a window or be older than the picture, so
// the pointer is asked instead.
std::optional<PicturePoint> EventRecorder::pointerInPicture() {
  const auto pointer = seams_.input.pointerPosition();
  if (!pointer) return std::nullopt;
  return normalised(*pointer, rectangle_->current(seams_.clock.now()));
}

void EventRecorder::receive(const InputEvent& event) {
  struct Receiver {
    EventRecorder& recorder;
    void operator()(const ButtonChange& change) const { recorder.receiveButton(change); }
    void operator()(const ScrollStep& step) const { recorder.receiveScroll(step); }
    void operator()(const KeyPress& key) const { recorder.receiveKey(key); }
  };
  std::visit(Receiver{*this}, event);
}

void EventRecorder::receiveButton(const ButtonChange& change) {
  const auto at = pointerInPicture();
  if (!at) return;
  if (!change.isPressed) return post(releaseEvent(change, *at));
  post(pressEvent(change, *at, seams_.frontApplication.name()));
  if (onClick) onClick(*at);
}

void EventRecorder::receiveScroll(const ScrollStep& step) {
  const auto at = pointerInPicture();
  if (!at) return;
  auto event = eventAt(step.time, Kind::scroll, at);
  event.scrollDX = step.dx;
  event.scrollDY = step.dy;
  post(std::move(event));
}

void EventRecorder::receiveKey(const KeyPress& key) {
  if (seams_.input.isSecureInput()) return;
  RecordedEvent event{.t = key.time, .type = Kind::key};
  event.combo = keyCombo(key);
  event.app = optionalText(seams_.frontApplication.name());
  queue_.post([this, event = std::move(event)]() mutable { heldKeys_.add(std::move(event)); });
}

void EventRecorder::receiveFrontApplication(const FrontApplication::Name& name) {
  queue_.post([this, name, t = seams_.clock.now()] {
    if (name == lastApp_) return;
    lastApp_ = name;
    RecordedEvent event{.t = t, .type = Kind::appChange};
    event.app = optionalText(name);
    append(std::move(event));
  });
}

void EventRecorder::samplePointer(double now) {
  sampleSecureInput(now);
  const auto at = pointerInPicture();
  if (!at || (lastSampled_ && !isStep(*lastSampled_, *at))) return;
  lastSampled_ = at;
  post(eventAt(now, Kind::move, at));
}

void EventRecorder::sampleSecureInput(double now) {
  const bool isSecureInput = seams_.input.isSecureInput();
  if (isSecureInput == lastSecureInput_) return;
  lastSecureInput_ = isSecureInput;
  queue_.post([this, now, isSecureInput] {
    if (isSecureInput) {
      heldKeys_.secureInputBegan(now);
    } else {
      heldKeys_.secureInputEnded(now);
    }
    RecordedEvent event{.t = now, .type = Kind::gap};
    event.reason = isSecureInput ? "secureInputBegan" : "secureInputEnded";
    append(std::move(event));
  });
}

void EventRecorder::post(RecordedEvent event) {
  queue_.post([this, event = std::move(event)]() mutable { append(std::move(event)); });
}

void EventRecorder::beginLog(EventLogFile file, bool isSecureInput, FrontApplication::Name app) {
  log_.emplace(std::move(file));
  heldKeys_ = HeldKeys{isSecureInput};
  lastApp_ = std::move(app);
  clickCount_ = 0;
  eventCount_ = 0;
}

void EventRecorder::append(RecordedEvent event) {
  for (auto& key : heldKeys_.release(event.t)) write(std::move(key));
  write(std::move(event));
}

void EventRecorder::write(RecordedEvent event) {
  ++eventCount_;
  if (event.type == Kind::click) ++clickCount_;
  if (event.type == Kind::zoomIn) ++zoomInCount_;
  if (event.type == Kind::zoomOut) ++zoomOutCount_;
  log_->append(std::move(event));
}

void EventRecorder::endLog() {
  for (auto& key : heldKeys_.releaseAll()) write(std::move(key));
  log_->finish();
  log_.reset();
}

}  // namespace vesk::capture
