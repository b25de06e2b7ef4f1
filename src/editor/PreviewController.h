#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "compositor/CompositeSettings.h"
#include "editor/AudioDiagnostics.h"
#include "editor/EditHistory.h"
#include "editor/Player.h"
#include "editor/SoundOutput.h"
#include "media/HostTime.h"
#include "motion/CursorTrack.h"
#include "motion/EffectTimeline.h"
#include "package/EditDocument.h"
#include "package/RecordingLibrary.h"
#include "package/RecordingProject.h"

namespace vesk::editor {

/// The editor session: the recording that is open, what is decided about it, and its playback. One
/// lives for the whole run of the application. Main thread. Times are seconds on the recording's
/// clock; failures end in `loadError`.
class PreviewController : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool hasProject READ hasProject NOTIFY projectChanged)
  Q_PROPERTY(QString title READ title NOTIFY projectChanged)
  Q_PROPERTY(bool hasCamera READ hasCamera NOTIFY projectChanged)
  Q_PROPERTY(double aspectRatio READ aspectRatio NOTIFY projectChanged)
  Q_PROPERTY(double duration READ duration NOTIFY projectChanged)
  Q_PROPERTY(QString loadError READ loadError NOTIFY loadErrorChanged)
  Q_PROPERTY(double currentTime READ currentTime NOTIFY currentTimeChanged)
  Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
  Q_PROPERTY(bool hasManualEdits READ hasManualEdits NOTIFY timelineChanged)
  Q_PROPERTY(QString densityWarning READ densityWarning NOTIFY timelineChanged)
  Q_PROPERTY(bool canUndo READ canUndo NOTIFY historyChanged)
  Q_PROPERTY(bool canRedo READ canRedo NOTIFY historyChanged)
  Q_PROPERTY(int documentVersion READ documentVersion NOTIFY documentVersionChanged)

 public:
  /// How far apart changes of one gesture may lie to be undone as one, in seconds.
  static constexpr double continuousEdit = 0.5;
  static constexpr double discreteEdit = 0;
  static constexpr std::chrono::milliseconds saveDelay{600};

  struct Surroundings {
    package::RecordingLibrary& library;         ///< outlives the session
    SoundOutput& sound;                         ///< outlives the session
    std::function<media::HostTime()> hostTime;  ///< CLOCK_MONOTONIC
    std::function<std::chrono::system_clock::time_point()> wallClock;
  };

  explicit PreviewController(Surroundings surroundings, QObject* parent = nullptr);
  ~PreviewController() override;

  // Opening.

  /// @param url a package; a slash may follow its name.
  void open(std::filesystem::path url);
  /// Opens the newest recording of the library.
  Q_INVOKABLE void loadLatest();
  void refreshAvailableRecordings();
  void unload();
  /// The graphics cannot draw: the session goes on without a picture, and saves nothing any more.
  /// There is no way back.
  void loseRenderer();

  bool hasProject() const { return project_ != nullptr; }
  std::shared_ptr<const package::RecordingProject> project() const { return project_; }
  QString title() const;
  bool hasCamera() const;
  /// Width over height of the recording; 16/9 without one.
  double aspectRatio() const;
  double duration() const { return duration_; }
  QString loadError() const { return loadError_; }
  const std::vector<std::filesystem::path>& availableRecordings() const {
    return availableRecordings_;
  }

  // The document.

  package::EditDocument snapshot() const;
  void apply(const package::EditDocument& document);
  int documentVersion() const { return documentVersion_; }

  /// Whether the session has a renderer, and with it a look.
  bool hasRenderer() const { return hasRenderer_; }
  /// The settings that the preview draws with.
  const compositor::CompositeSettings& look() const { return look_; }
  /// Grows with each change of the look, so that whoever copies it knows when to.
  std::uint64_t lookVersion() const { return lookVersion_; }
  /// Changes the look. Neither remembers a step to undo nor saves: see pushUndo, scheduleSave.
  void changeLook(const std::function<void(compositor::CompositeSettings&)>& change);

  void pushUndo(double coalesce);
  Q_INVOKABLE void undo();
  Q_INVOKABLE void redo();
  bool canUndo() const { return history_.canUndo(); }
  bool canRedo() const { return history_.canRedo(); }
  void scheduleSave();
  void flushSave();

  // The timeline.

  const motion::EffectTimeline& timeline() const { return timeline_; }
  const motion::ZoomSegment* segment(const std::string& id) const;
  const std::optional<motion::CursorTrack>& cursorTrack() const { return cursorTrack_; }
  bool hasManualEdits() const { return hasManualEdits_; }
  void setHasManualEdits(bool value);
  QString densityWarning() const { return densityWarning_; }
  motion::Sensitivity sensitivityRaw() const { return sensitivityRaw_; }
  bool useAutoDetectionRaw() const { return useAutoDetectionRaw_; }
  double followSpeedRaw() const { return followSpeedRaw_; }

  /// Writes the values without anything else that a change by the user entails.
  void setSensitivityRaw(motion::Sensitivity value);
  void setUseAutoDetectionRaw(bool value);
  void setFollowSpeedRaw(double value);

  /// Infers the segments anew; manual edits are lost.
  void regenerate();
  /// Builds the camera's path from the segments as they are, and schedules a save.
  void rebuildTrack();

  // Changes by the user, with all that they entail.

  void changeUseAutoDetection(bool value);
  void changeSensitivity(motion::Sensitivity value);
  void changeFollowSpeed(double value);
  void changeTransitionEase(motion::CameraEase value);
  void changeCamera3D(const package::Camera3DSettings& preset);
  /// Back to the inference; what to ask before stands in resetQuestion().
  void resetToAutomatic();
  QString resetQuestion() const;
  void changeVolumes(double system, double mic);

  // Of the segments; nothing happens for an unknown id.

  /// Changes one segment by a function and rebuilds the track.
  void changeSegment(const std::string& id,
                     const std::function<void(motion::ZoomSegment&)>& change);
  /// Without rebuilding the track, as a drag goes on.
  void setSegmentTimes(const std::string& id, double start, double end);
  /// A new segment around a time, unless it would overlap another one.
  std::optional<std::string> addSegment(double time);
  std::optional<std::string> duplicateSegment(const std::string& id);
  void deleteSegment(const std::string& id);
  void toggleSegmentEnabled(const std::string& id);
  /// Deletes the first segment that holds a click's time, or adds one around it.
  /// @return the id of the new segment.
  std::optional<std::string> toggleEffect(double clickTime);

  // Playback.

  double currentTime() const { return currentTime_; }
  bool isPlaying() const { return isPlaying_; }
  Q_INVOKABLE void play();
  Q_INVOKABLE void pause();
  Q_INVOKABLE void togglePlaying();
  Q_INVOKABLE void seek(double seconds);
  void applyVolumes();
  /// Takes the time from the player, and pauses at the end of the recording. To be called between
  /// two frames that are drawn; where none is, the session calls it now and then.
  void tick();

  /// The screen's and the camera's picture for the current time, as far as they are decoded.
  std::optional<media::VideoFrame> screenPicture() const;
  std::optional<media::VideoFrame> cameraPicture() const;

  Player* player() const { return player_.get(); }
  std::vector<SyncedPlayer> syncedPlayers() const;
  AudioDiagnostics audioDiagnostics() const;
  std::vector<std::string> trackLayoutLines() const;
  std::vector<std::string> trackLayoutWarnings() const;

 Q_SIGNALS:
  void projectChanged();
  void loadErrorChanged();
  void availableRecordingsChanged();
  void documentVersionChanged();
  void lookChanged();
  void timelineChanged();
  void segmentDeleted(const QString& id);
  void historyChanged();
  void currentTimeChanged();
  void isPlayingChanged();
  /// The preview shows something else now.
  void pictureChanged();
  /// A picture that was asked for is decoded. Emitted on a decoder's thread; pictureChanged
  /// follows.
  void pictureArrived();

 private:
  using Project = std::shared_ptr<const package::RecordingProject>;

  void setLoadError(const QString& error);
  void setCurrentTime(double time);
  void setPlaying(bool playing);
  void pauseAt(media::HostTime now);
  /// Follows the player, unless it has no time.
  /// @return the player's time.
  double takeTime(media::HostTime now);
  void bindProject(Project project);
  void loadDocument();
  /// What apply does before it builds the camera's path.
  void writeDocument(const package::EditDocument& document);
  void writeLook(const package::EditDocument& document);
  void storeTrack();
  void setDensityWarning(std::string_view advice);
  void stepHistory(const std::optional<package::EditDocument>& entry);
  motion::ZoomSegment* editableSegment(const std::string& id);
  void finishSegmentEdit();
  package::Timestamp timestamp() const;

  Surroundings surroundings_;
  std::shared_ptr<const package::RecordingProject> project_;
  double duration_ = 0;
  QString loadError_;
  std::vector<std::filesystem::path> availableRecordings_;

  bool hasRenderer_ = true;
  compositor::CompositeSettings look_;
  std::uint64_t lookVersion_ = 0;
  int documentVersion_ = 0;
  bool isLoadingDocument_ = false;
  EditHistory history_;
  QTimer saveTimer_;

  motion::EffectTimeline timeline_;
  std::optional<motion::CursorTrack> cursorTrack_;
  bool hasManualEdits_ = false;
  QString densityWarning_;
  motion::Sensitivity sensitivityRaw_ = motion::Sensitivity::standard;
  bool useAutoDetectionRaw_ = true;
  double followSpeedRaw_ = 0.3;

  double currentTime_ = 0;
  bool isPlaying_ = false;
  std::unique_ptr<Player> player_;
  QTimer endWatch_;  ///< notices the end where no frame is drawn
};

}  // namespace vesk::editor
