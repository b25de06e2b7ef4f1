#include "editor/PreviewController.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "motion/SmartZoom.h"
#include "motion/StoredSegment.h"
#include "package/Log.h"

namespace vesk::editor {
namespace {

using motion::ZoomSegment;
using package::EditDocument;

constexpr double endMargin = 0.05;
constexpr std::chrono::milliseconds endWatchInterval{250};

spdlog::logger& previewLog() {
  return package::log(package::LogCategory::preview);
}

QString text(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

}  // namespace

PreviewController::PreviewController(Surroundings surroundings, QObject* parent)
    : QObject(parent), surroundings_(std::move(surroundings)) {
  saveTimer_.setSingleShot(true);
  saveTimer_.setInterval(saveDelay);
  connect(&saveTimer_, &QTimer::timeout, this, &PreviewController::flushSave);
  endWatch_.setInterval(endWatchInterval);
  connect(&endWatch_, &QTimer::timeout, this, &PreviewController::tick);
  connect(this, &PreviewController::pictureArrived, this, &PreviewController::pictureChanged,
          Qt::QueuedConnection);
}

PreviewController::~PreviewController() = default;

// Opening.

void PreviewController::open(std::filesystem::path url) {
  url = package::withoutTrailingSlash(url);
  flushSave();
  history_.clear();
  Q_EMIT historyChanged();
  setLoadError({});
  auto project = package::RecordingProject::load(url, timestamp());
  if (!project) {
    previewLog().error("open failed: {}", project.error().message);
    setLoadError(text("打开失败：" + project.error().message));
    return;
  }
  bindProject(std::make_shared<const package::RecordingProject>(*std::move(project)));
  loadDocument();
  applyVolumes();
  player_->seek(0, surroundings_.hostTime());
  refreshAvailableRecordings();
  previewLog().info("opened {} dur={:f}", url.filename().string(), duration_);
  Q_EMIT pictureChanged();
}

void PreviewController::bindProject(Project project) {
  setPlaying(false);
  // The old player first: it and the new one share the output.
  player_.reset();
  player_ =
      std::make_unique<Player>(*project, surroundings_.sound, [this] { Q_EMIT pictureArrived(); });
  project_ = std::move(project);
  cursorTrack_.reset();
  // Those of the recording before must not get into this one's document.
  timeline_.segments.clear();
  duration_ = project_->duration();
  setCurrentTime(0);
  Q_EMIT projectChanged();
}

void PreviewController::loadDocument() {
  isLoadingDocument_ = true;
  const EditDocument::LoadResult result = EditDocument::load(project_->url, timestamp());
  if (const auto* corrupt = result.corrupt()) {
    previewLog().error("edit.json 解析失败：{}", corrupt->error.message);
    setLoadError(
        text(corrupt->backup
                 ? fmt::format("这份录制的编辑记录读不出来，已改用默认设置。原文件保留在 {}",
                               corrupt->backup->filename().string())
                 : std::string("这份录制的编辑记录读不出来，已改用默认设置（原文件备份失败）")));
  }
  const EditDocument document = result.ok() != nullptr ? *result.ok() : EditDocument();
  writeDocument(document);
  cursorTrack_.emplace(*project_);
  if (document.segments) {
    timeline_.sensitivity = sensitivityRaw_;
    hasManualEdits_ = true;
    rebuildTrack();
  } else {
    regenerate();
  }
  isLoadingDocument_ = false;
}

void PreviewController::loadLatest() {
  refreshAvailableRecordings();
  if (availableRecordings_.empty()) {
    setLoadError(text("还没有录制。先录一段。"));
    return;
  }
  open(availableRecordings_.front());
}

void PreviewController::refreshAvailableRecordings() {
  surroundings_.library.rescan();
  availableRecordings_.clear();
  for (const auto& item : surroundings_.library.items()) availableRecordings_.push_back(item.url);
  Q_EMIT availableRecordingsChanged();
}

void PreviewController::unload() {
  flushSave();
  setPlaying(false);
  player_.reset();
  project_.reset();
  cursorTrack_.reset();
  duration_ = 0;
  setCurrentTime(0);
  regenerate();
  Q_EMIT projectChanged();
  Q_EMIT pictureChanged();
}

void PreviewController::loseRenderer() {
  if (!hasRenderer_) return;
  // While the session still knows the whole document.
  if (saveTimer_.isActive()) flushSave();
  hasRenderer_ = false;
  previewLog().warn("no renderer: changes are not saved from here on");
  setLoadError(text("Metal 初始化失败，这台机器可能不支持所需特性"));
}

QString PreviewController::title() const {
  return project_ ? text(project_->url.stem().string()) : QString();
}

bool PreviewController::hasCamera() const {
  return player_ && !player_->syncedPlayers().empty();
}

double PreviewController::aspectRatio() const {
  if (!project_ || project_->meta.captureHeight < 1 || project_->meta.captureWidth < 1) {
    return 16.0 / 9.0;
  }
  return static_cast<double>(project_->meta.captureWidth) /
         static_cast<double>(project_->meta.captureHeight);
}

// The document.

EditDocument PreviewController::snapshot() const {
  EditDocument document;
  document.sensitivity = motion::rawValue(sensitivityRaw_);
  document.useAutoDetection = useAutoDetectionRaw_;
  document.followSpeed = followSpeedRaw_;
  document.segments.emplace();
  document.segments->reserve(timeline_.segments.size());
  std::ranges::transform(timeline_.segments, std::back_inserter(*document.segments),
                         motion::storedSegment);
  if (!hasRenderer_) return document;
  document.ripple = EditDocument::RippleDoc(look_.rippleSettings);
  document.cursor = EditDocument::CursorDoc(look_.cursorSettings);
  document.camera3D = EditDocument::Camera3DDoc(look_.camera3D);
  document.pip = EditDocument::PiPDoc(look_.pip);
  document.frame = EditDocument::FrameDoc(look_.frameStyle);
  document.transitionEase = motion::rawValue(look_.transitionEase);
  document.motionBlurEnabled = look_.motionBlurEnabled;
  document.motionBlurStrength = look_.motionBlurStrength;
  document.systemVolume = look_.systemVolume;
  document.micVolume = look_.micVolume;
  return document;
}

void PreviewController::apply(const EditDocument& document) {
  writeDocument(document);
  if (hasRenderer_ && document.segments) rebuildTrack();
}

void PreviewController::writeDocument(const EditDocument& document) {
  sensitivityRaw_ = motion::sensitivityNamed(document.sensitivity);
  useAutoDetectionRaw_ = document.useAutoDetection;
  followSpeedRaw_ = document.followSpeed;
  if (!hasRenderer_) return;
  writeLook(document);
  if (document.segments) {
    timeline_.segments.clear();
    std::ranges::transform(*document.segments, std::back_inserter(timeline_.segments),
                           motion::zoomSegment);
  }
  ++documentVersion_;
  Q_EMIT documentVersionChanged();
}

void PreviewController::writeLook(const EditDocument& document) {
  changeLook([&](compositor::CompositeSettings& look) {
    document.ripple.applyTo(look.rippleSettings);
    document.cursor.applyTo(look.cursorSettings);
    document.camera3D.applyTo(look.camera3D);
    document.pip.applyTo(look.pip);
    document.frame.applyTo(look.frameStyle);
    look.transitionEase = motion::cameraEaseNamed(document.transitionEase);
    look.motionBlurEnabled = document.motionBlurEnabled;
    look.motionBlurStrength = document.motionBlurStrength;
    look.systemVolume = document.systemVolume;
    look.micVolume = document.micVolume;
    // The mode of a recording cannot change after the take, whatever the document says.
    look.camera3D.enabled =
        project_ && project_->meta.cameraMode == package::CameraMode::perspective;
  });
}

void PreviewController::changeLook(
    const std::function<void(compositor::CompositeSettings&)>& change) {
  if (!hasRenderer_) return;
  change(look_);
  ++lookVersion_;
  Q_EMIT lookChanged();
  Q_EMIT pictureChanged();
}

void PreviewController::pushUndo(double coalesce) {
  if (!project_ || isLoadingDocument_) return;
  history_.push(media::secondsOf(surroundings_.hostTime()), coalesce,
                [this] { return snapshot(); });
  Q_EMIT historyChanged();
}

void PreviewController::undo() {
  if (!project_) return;
  stepHistory(history_.undo([this] { return snapshot(); }));
}

void PreviewController::redo() {
  if (!project_) return;
  stepHistory(history_.redo([this] { return snapshot(); }));
}

void PreviewController::stepHistory(const std::optional<EditDocument>& entry) {
  if (!entry) return;
  isLoadingDocument_ = true;
  writeDocument(*entry);
  isLoadingDocument_ = false;
  rebuildTrack();
  // What the volumes are set to is to be heard as well.
  applyVolumes();
  Q_EMIT historyChanged();
}

void PreviewController::scheduleSave() {
  if (isLoadingDocument_ || !project_) return;
  saveTimer_.start();
}

void PreviewController::flushSave() {
  saveTimer_.stop();
  // Without a renderer the session has read a part of the document only; written back, that would
  // take the place of all the rest.
  if (!project_ || !hasRenderer_) return;
  if (const auto saved = snapshot().save(project_->url); !saved) {
    previewLog().error("保存 edit.json 失败：{}", saved.error().message);
  }
}

// The timeline.

const ZoomSegment* PreviewController::segment(const std::string& id) const {
  const auto found = std::ranges::find(timeline_.segments, id, &ZoomSegment::id);
  return found == timeline_.segments.end() ? nullptr : &*found;
}

void PreviewController::setHasManualEdits(bool value) {
  hasManualEdits_ = value;
  Q_EMIT timelineChanged();
}

void PreviewController::regenerate() {
  if (!project_) {
    timeline_.segments.clear();
    storeTrack();
    densityWarning_.clear();
    Q_EMIT timelineChanged();
    return;
  }
  timeline_.segments = motion::combinedSegments(*project_, sensitivityRaw_, useAutoDetectionRaw_);
  for (ZoomSegment& segment : timeline_.segments) segment.followSpeed = followSpeedRaw_;
  timeline_.sensitivity = sensitivityRaw_;
  setDensityWarning("建议把灵敏度调到「保守」。");
  if (cursorTrack_) storeTrack();
  hasManualEdits_ = false;
  previewLog().info("effects regenerated: {} segs, coverage {:f}", timeline_.segments.size(),
                    timeline_.coverage(duration_));
  Q_EMIT timelineChanged();
}

void PreviewController::rebuildTrack() {
  scheduleSave();
  if (project_ && cursorTrack_) {
    for (ZoomSegment& segment : timeline_.segments) segment.followSpeed = followSpeedRaw_;
    storeTrack();
    setDensityWarning("");
  }
  Q_EMIT timelineChanged();
}

void PreviewController::storeTrack() {
  changeLook([&](compositor::CompositeSettings& look) {
    if (!project_ || !cursorTrack_) {
      look.cameraTrack.reset();
      return;
    }
    look.cameraTrack = motion::buildTrack(timeline_.segments, *cursorTrack_, duration_,
                                          look.camera3D, look.transitionEase);
  });
}

void PreviewController::setDensityWarning(std::string_view advice) {
  const double coverage = timeline_.coverage(duration_);
  densityWarning_.clear();
  if (!(coverage > motion::densityLimit)) return;
  densityWarning_ =
      text(fmt::format("效果覆盖了 {:.0f}% 的时长，可能过于密集。{}", coverage * 100, advice));
}

// Playback.

void PreviewController::play() {
  if (!player_) return;
  if (!(duration_ - endMargin > currentTime_)) seek(0);
  player_->play(surroundings_.hostTime());
  setPlaying(true);
}

void PreviewController::pause() {
  if (player_) pauseAt(surroundings_.hostTime());
}

void PreviewController::pauseAt(media::HostTime now) {
  // What was heard since the last frame has been played as well.
  if (isPlaying_) takeTime(now);
  player_->pause(now);
  // Beyond the end, or without a time, the player stands elsewhere than the session.
  if (player_->currentTime(now) != currentTime_) player_->seek(currentTime_, now);
  setPlaying(false);
}

void PreviewController::togglePlaying() {
  if (isPlaying_) {
    pause();
  } else {
    play();
  }
}

void PreviewController::seek(double seconds) {
  if (!player_ || std::isnan(seconds)) return;
  const double time = std::min(std::max(seconds, 0.0), std::max(duration_, 0.0));
  player_->seek(time, surroundings_.hostTime());
  setCurrentTime(time);
}

void PreviewController::applyVolumes() {
  if (!player_ || !hasRenderer_) return;
  player_->setVolumes(look_.systemVolume, look_.micVolume);
}

void PreviewController::tick() {
  if (!isPlaying_ || !player_) return;
  const media::HostTime now = surroundings_.hostTime();
  player_->advance(now);
  const double time = takeTime(now);
  if (!std::isfinite(time)) return;
  // The recording's length decides, not the picture's, whose last one stands until then: a screen
  // on which nothing moves any more gives no pictures.
  if (time >= duration_) {
    pauseAt(now);
  } else {
    endWatch_.start();
    // The next frame is wanted even where the time has not moved yet.
    Q_EMIT pictureChanged();
  }
}

double PreviewController::takeTime(media::HostTime now) {
  const double time = player_->currentTime(now);
  if (std::isfinite(time)) setCurrentTime(std::min(duration_, time));
  return time;
}

void PreviewController::setCurrentTime(double time) {
  if (time == currentTime_) return;
  currentTime_ = time;
  Q_EMIT currentTimeChanged();
  Q_EMIT pictureChanged();
}

void PreviewController::setPlaying(bool playing) {
  if (playing == isPlaying_) return;
  isPlaying_ = playing;
  if (playing) {
    endWatch_.start();
  } else {
    endWatch_.stop();
  }
  Q_EMIT isPlayingChanged();
  Q_EMIT pictureChanged();
}

std::optional<media::VideoFrame> PreviewController::screenPicture() const {
  return player_ ? player_->screenPicture(currentTime_) : std::nullopt;
}

std::optional<media::VideoFrame> PreviewController::cameraPicture() const {
  return player_ ? player_->cameraPicture(currentTime_) : std::nullopt;
}

std::vector<SyncedPlayer> PreviewController::syncedPlayers() const {
  return player_ ? player_->syncedPlayers() : std::vector<SyncedPlayer>();
}

AudioDiagnostics PreviewController::audioDiagnostics() const {
  return player_ ? player_->diagnostics() : AudioDiagnostics{.statusText = "未知"};
}

std::vector<std::string> PreviewController::trackLayoutLines() const {
  if (!player_) return {"没有播放项"};
  return editor::trackLayoutLines(player_->composition());
}

std::vector<std::string> PreviewController::trackLayoutWarnings() const {
  if (!player_ || !project_) return {};
  return editor::trackLayoutWarnings(player_->composition(), *project_);
}

void PreviewController::setLoadError(const QString& error) {
  if (error == loadError_) return;
  loadError_ = error;
  Q_EMIT loadErrorChanged();
}

package::Timestamp PreviewController::timestamp() const {
  return std::chrono::floor<std::chrono::seconds>(surroundings_.wallClock());
}

}  // namespace vesk::editor
