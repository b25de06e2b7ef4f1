#include "capture/RecordingSession.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include "capture/ScopeGeometry.h"
#include "capture/TakeFolder.h"
#include "package/DurableWrite.h"
#include "package/Log.h"

namespace vesk::capture {
namespace {

using package::RecordingMeta;
using Kind = package::RecordedEvent::Kind;

constexpr int screenFramesPerSecond = 60;
constexpr double bitsPerPixel = 0.05;
constexpr double tickInterval = 0.1;

spdlog::logger& sessionLog() {
  return package::log(package::LogCategory::session);
}

std::string_view labelOf(HotKeyManager::Action action) {
  return action == HotKeyManager::Action::zoomIn ? "放大标记" : "还原标记";
}

std::optional<std::string> hotKeyWarning(const std::vector<HotKeyManager::Action>& failed) {
  if (failed.empty()) return std::nullopt;
  std::vector<std::string_view> labels;
  std::ranges::transform(failed, std::back_inserter(labels), labelOf);
  return fmt::format("{}的快捷键注册失败，可能已被其它 App 占用。换一个组合再试。",
                     fmt::join(labels, "、"));
}

/// Those texts that are there, one after another.
std::optional<std::string> joined(const std::optional<std::string>& first,
                                  const std::optional<std::string>& second) {
  if (!first || !second) return first ? first : second;
  return *first + "；" + *second;
}

std::optional<std::string> named(std::string_view stream,
                                 const std::optional<std::string>& failure) {
  return failure ? std::optional{std::string{stream} + *failure} : std::nullopt;
}

package::Timestamp wholeSeconds(RecordingSession::WallTime time) {
  return std::chrono::floor<std::chrono::seconds>(time);
}

}  // namespace

RecordingSession::RecordingSession(Surroundings surroundings)
    : surroundings_{std::move(surroundings)},
      events_{{.input = *surroundings_.backends.input,
               .frontApplication = *surroundings_.backends.frontApplication,
               .geometry = *surroundings_.backends.geometry,
               .clock = surroundings_.clock,
               .startSampler = surroundings_.startSampler,
               .postToMain = surroundings_.postToMain}},
      hotkeys_{*surroundings_.backends.hotKeys, KeyNames{surroundings_.backends.keyboardLayout},
               surroundings_.postToMain},
      mic_{*surroundings_.backends.microphone, surroundings_.openMovie},
      camera_{*surroundings_.backends.camera, surroundings_.openMovie},
      engine_{{.screen = *surroundings_.backends.screen,
               .systemSound = *surroundings_.backends.systemSound,
               .geometry = *surroundings_.backends.geometry,
               .chooseEncoder = surroundings_.chooseEncoder,
               .openMovie = surroundings_.openMovie}} {
  engine_.onFirstFrame = [this](double seconds) { events_.setTimeOrigin(seconds); };
  engine_.onInterrupt = [this](const std::string& reason) { interrupt(reason); };
  events_.onCameraMark = [self = std::weak_ptr{self_}](Kind kind) {
    if (const auto session = self.lock()) (*session)->mark(kind);
  };
  hotkeys_.onTrigger = [this](HotKeyManager::Action action) {
    events_.mark(action == HotKeyManager::Action::zoomIn ? Kind::zoomIn : Kind::zoomOut);
  };
}

RecordingSession::~RecordingSession() = default;

package::ChangeSignal::Subscription RecordingSession::onChange(
    package::ChangeSignal::Observer observer) {
  return changed_.subscribe(std::move(observer));
}

void RecordingSession::publish(const Change& change) {
  auto changed = published_;
  change(changed);
  if (changed == published_) return;
  published_ = std::move(changed);
  changed_.notify();
}

void RecordingSession::onMain(std::function<void(RecordingSession&)> task) {
  surroundings_.postToMain([self = std::weak_ptr{self_}, task = std::move(task)] {
    if (const auto session = self.lock()) task(**session);
  });
}

void RecordingSession::start(const Order& order) {
  const bool isFree = std::holds_alternative<state::Idle>(state()) ||
                      std::holds_alternative<state::Finished>(state()) ||
                      std::holds_alternative<state::Failed>(state());
  if (!isFree) return;
  publish([](Published& published) {
    published = {};
    published.state = state::Preparing{};
  });
  if (const auto prepared = prepare(order); !prepared) {
    failStart(prepared.error());
    return;
  }
  work_.post([this, order, package = *packageURL_] {
    auto started = startStreams(order, package);
    onMain([order, started = std::move(started)](RecordingSession& session) {
      if (started) {
        session.begin(order, *started);
      } else {
        session.failStart(started.error().message);
      }
    });
  });
}

std::expected<void, std::string> RecordingSession::prepare(const Order& order) {
  const auto& geometry = *surroundings_.backends.geometry;
  packageURL_.reset();
  meta_.reset();
  startedAt_.reset();
  auto target = displayOf(order.scope, geometry);
  if (!target && order.displayID) target = displayWithID(*order.displayID, geometry);
  if (!target) target = defaultDisplay(geometry);
  if (!target) return std::unexpected(CaptureError::noDisplayAvailable().message);
  displayID_ = target->id;

  auto folder = makeTakeFolder(surroundings_.library, wholeSeconds(surroundings_.now()));
  if (!folder) return std::unexpected(folder.error());
  packageURL_ = *std::move(folder);

  const auto log =
      events_.start(*target, order.scope, *packageURL_ / "events.jsonl", order.captureKeyboard);
  if (!log) return std::unexpected(log.error().message);
  if (order.shortcuts && order.shortcuts->manualMarksEnabled()) registerHotKeys(*order.shortcuts);
  return {};
}

void RecordingSession::registerHotKeys(const ShortcutSettings& shortcuts) {
  auto warning = hotKeyWarning(hotkeys_.registerKeys(shortcuts.zoomIn(), shortcuts.zoomOut()));
  publish([&](Published& published) { published.hotkeyWarning = std::move(warning); });
}

// On the queue. The screen comes first; microphone and camera have clock starts of their own.
std::expected<RecordingSession::Started, CaptureError> RecordingSession::startStreams(
    const Order& order, const std::filesystem::path& package) {
  const auto started = engine_.start({.displayID = displayID_,
                                      .scope = order.scope,
                                      .fps = screenFramesPerSecond,
                                      .bppCoefficient = bitsPerPixel,
                                      .outputURL = package / "screen.mov",
                                      .capturesSystemAudio = order.captureSystemAudio});
  if (!started) return std::unexpected(started.error());
  Started streams;
  streams.pixelWidth = engine_.pixelWidth();
  streams.pixelHeight = engine_.pixelHeight();
  streams.scaleFactor = engine_.scaleFactor();
  if (order.captureMicrophone) {
    const auto mic = mic_.start(package / "mic.m4a");
    streams.hasMicrophone = mic.has_value();
    if (!mic) {
      sessionLog().error("mic failed: {}", mic.error().message);
      streams.micWarning = "麦克风启动失败：" + mic.error().message + "。已按静音继续录制。";
    }
  }
  if (order.captureCamera) {
    const auto camera = camera_.start(order.cameraDevice, package / "camera.mov");
    streams.hasCamera = camera.has_value();
    if (!camera) {
      sessionLog().error("camera failed: {}", camera.error().message);
      streams.cameraWarning =
          "摄像头启动失败：" + camera.error().message + "。已按无画中画继续录制。";
    }
  }
  return streams;
}

void RecordingSession::begin(const Order& order, const Started& started) {
  meta_ = RecordingMeta{
      .createdAt = wholeSeconds(surroundings_.now()),
      .displayID = displayID_,
      .captureWidth = started.pixelWidth,
      .captureHeight = started.pixelHeight,
      .fps = screenFramesPerSecond,
      .scaleFactor = started.scaleFactor,
      .hasSystemAudio = order.captureSystemAudio,
      .hasMicrophone = started.hasMicrophone,
      .hasCamera = started.hasCamera,
      .cameraMode = order.cameraMode,
      .scope = scopeToStore(order.scope, surroundings_.backends.geometry->displays())};
  startedAt_ = surroundings_.now();
  publish([&](Published& published) {
    published.state = state::Recording{};
    published.micWarning = started.micWarning;
    published.cameraWarning = started.cameraWarning;
  });
  ticker_ = surroundings_.startTicker(tickInterval, [self = std::weak_ptr{self_}] {
    if (const auto session = self.lock()) (*session)->tick();
  });
  sessionLog().info("session started at {}", packageURL_->filename().string());
  // What ended the picture before the recording had begun was told to nobody yet.
  if (interruptNotice()) stop();
}

void RecordingSession::failStart(const std::string& message) {
  events_.stop();
  hotkeys_.unregisterAll();
  work_.post([this, message] {
    engine_.stop();
    mic_.stop();
    camera_.stop();
    onMain([message](RecordingSession& session) {
      if (const auto package = std::exchange(session.packageURL_, std::nullopt)) {
        std::error_code ignored;
        std::filesystem::remove_all(*package, ignored);
      }
      sessionLog().error("session start failed: {}", message);
      session.fail(message);
    });
  });
}

void RecordingSession::stop() {
  if (!std::holds_alternative<state::Recording>(state())) return;
  publish([](Published& published) { published.state = state::Finishing{}; });
  ticker_.reset();
  tick();
  hotkeys_.unregisterAll();
  events_.stop();
  work_.post([this] {
    mic_.stop();
    camera_.stop();
    const auto report = engine_.stop();
    onMain([report](RecordingSession& session) { session.finish(report); });
  });
}

void RecordingSession::finish(const ScreenCaptureEngine::Report& report) {
  lastCaptureReport_ = report;
  if (!packageURL_ || !meta_) {
    fail("录制包丢失");
    return;
  }
  auto meta = completed(report);
  reportSideStreams(meta);
  const auto written =
      package::writeFileAtomically(*packageURL_ / "meta.json", package::encodeRecordingMeta(meta));
  if (!written) {
    sessionLog().error("写 meta.json 失败：{}", written.error().message);
    fail("录制素材已保存，但索引文件写入失败，这段录制打不开：" + written.error().message);
    return;
  }
  if (meta.droppedFrames >= 1) sessionLog().error("本次录制丢帧 {}", meta.droppedFrames);
  sessionLog().info("session finished duration={:f} events={}", meta.duration.value_or(0),
                    events_.eventCount());
  meta_ = std::move(meta);
  publish([&](Published& published) { published.state = state::Finished{*packageURL_}; });
}

RecordingMeta RecordingSession::completed(const ScreenCaptureEngine::Report& report) const {
  auto meta = *meta_;
  meta.firstFramePTS = report.firstFramePTS;
  if (startedAt_) meta.duration = (surroundings_.now() - *startedAt_).count();
  meta.droppedFrames = report.droppedFrames;
  meta.interrupted = report.interrupted || interruptNotice().has_value();
  meta.interruptReason = report.interruptReason ? report.interruptReason : interruptNotice();
  meta.cursorSeparated = true;
  if (meta.hasMicrophone) meta.micFirstSamplePTS = mic_.firstSamplePTS();
  if (meta.hasCamera) {
    meta.cameraFirstFramePTS = camera_.firstFramePTS();
    meta.cameraFirstLitPTS = camera_.firstLitFramePTS();
  }
  // The recorder remembers its first lit frame over all takes; one of an earlier take tells
  // nothing.
  if (meta.cameraFirstLitPTS < meta.cameraFirstFramePTS) meta.cameraFirstLitPTS.reset();
  return meta;
}

void RecordingSession::reportSideStreams(RecordingMeta& meta) {
  const auto failures =
      joined(named("麦克风：", mic_.failure()), named("摄像头：", camera_.failure()));
  if (!failures) return;
  sessionLog().error("side stream failures: {}", *failures);
  meta.interrupted = true;
  meta.interruptReason = joined(meta.interruptReason, failures);
  publish([&](Published& published) {
    published.cameraWarning = *failures + "。画面已保存，但这部分素材不完整。";
  });
}

void RecordingSession::fail(std::string message) {
  publish([&](Published& published) { published.state = state::Failed{std::move(message)}; });
}

void RecordingSession::interrupt(const std::string& reason) {
  onMain([reason](RecordingSession& session) {
    const bool isTaking = std::holds_alternative<state::Preparing>(session.state()) ||
                          std::holds_alternative<state::Recording>(session.state()) ||
                          std::holds_alternative<state::Finishing>(session.state());
    if (!isTaking) return;
    session.publish([&](Published& published) { published.interruptNotice = reason; });
    session.stop();
  });
}

// A second "zoom in" pans to another place, so the picture stays zoomed in.
void RecordingSession::mark(Kind kind) {
  publish([&](Published& published) {
    const std::int64_t before = published.lastMark ? published.lastMark->seq : 0;
    published.lastMark = MarkPulse{.kind = kind, .seq = before + 1};
    published.isZoomedIn = kind == Kind::zoomIn;
  });
}

void RecordingSession::tick() {
  publish([this](Published& published) {
    if (startedAt_) published.elapsed = (surroundings_.now() - *startedAt_).count();
    published.markerCount = events_.clickCount();
    published.zoomInCount = events_.zoomInCount();
    published.zoomOutCount = events_.zoomOutCount();
  });
}

}  // namespace vesk::capture
