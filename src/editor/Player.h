#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "editor/AudioDiagnostics.h"
#include "editor/PlaybackComposition.h"
#include "editor/SoundOutput.h"
#include "editor/SoundTrackFeed.h"
#include "media/HostTime.h"
#include "media/PictureFeed.h"
#include "package/RecordingProject.h"

namespace vesk::editor {

/// A picture stream that follows the main player at a fixed distance.
struct SyncedPlayer {
  media::PictureFeed* pictures = nullptr;
  double delta = 0;  ///< seconds; its time is the main player's plus this, and not below 0

  double time(double mainTime) const;
  /// The time to ask its pictures for: until the stream has started, its first one stands.
  double pictureTime(double mainTime) const;
};

/// Plays a recording: screen and camera as pictures to be pulled by time, the sound through an
/// output whose clock is the master of all. One start holds for all streams, since all of them
/// follow that one clock. What cannot be read is left out. One thread, the user interface's; `now`
/// is the instant of the call on the host's clock.
class Player {
 public:
  /// Between the wish to play and the sound lies a pause in which all streams get ready.
  static constexpr media::HostTime startDelay = std::chrono::milliseconds(80);

  /// @param sound outlives the player, which is the only one to use it meanwhile.
  /// @param arrival called on any thread when a picture has come that was asked for before.
  Player(const package::RecordingProject& project, SoundOutput& sound,
         const std::function<void()>& arrival);
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;
  ~Player();

  const PlaybackComposition& composition() const { return composition_; }
  /// The camera, when the recording has one that can be read.
  std::vector<SyncedPlayer> syncedPlayers() const;

  void play(media::HostTime now);
  void pause(media::HostTime now);
  bool isPlaying() const { return isPlaying_; }
  /// Moves all streams; while it plays, the sound goes on from there.
  void seek(double seconds, media::HostTime now);
  /// Does what has come due; to be called often while it plays.
  void advance(media::HostTime now);

  /// The time of the main player: what is heard now. Stands still until the first sample is heard.
  double currentTime(media::HostTime now) const;

  std::optional<media::VideoFrame> screenPicture(double time) const;
  std::optional<media::VideoFrame> cameraPicture(double time) const;
  /// Whether both are what they will stay.
  bool hasExactPictures(double time) const;
  /// Waits until they are.
  void waitForPictures(double time) const;

  /// Factors of 0…2; what is beyond counts as the nearest of these, what is no number as 1.
  void setVolumes(double system, double mic);

  AudioDiagnostics diagnostics() const;

 private:
  void openCamera(const package::RecordingProject& project, const std::function<void()>& arrival);
  void openSound();
  void prepareSound(media::HostTime now);
  void startSound();
  double screenTime(double time) const;

  SoundOutput& sound_;
  PlaybackComposition composition_;
  std::unique_ptr<media::PictureFeed> screen_;
  std::string screenError_;
  std::unique_ptr<media::PictureFeed> camera_;
  double cameraDelta_ = 0;
  std::unique_ptr<SoundTrackFeed> soundTracks_;
  std::vector<int> soundTrackIDs_;  ///< of the feed's clips
  float volume_ = 1;
  double start_ = 0;  ///< where the clock stands, or stood when the sound started
  bool isPlaying_ = false;
  std::optional<media::HostTime> soundDue_;  ///< when the sound is to start
};

}  // namespace vesk::editor
