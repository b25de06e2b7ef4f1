#include "editor/Player.h"

#include <algorithm>
#include <utility>

#include "compositor/CameraClock.h"
#include "media/SoundGain.h"
#include "package/Log.h"
#include "package/PackageFile.h"

namespace vesk::editor {
namespace {

// A picture on the grid belongs to its own time, whatever the last bit of that says.
constexpr double gridTolerance = 0.000001;

}  // namespace

double SyncedPlayer::time(double mainTime) const {
  return std::max(mainTime + delta, 0.0);
}

double SyncedPlayer::pictureTime(double mainTime) const {
  return std::max(time(mainTime), pictures->firstPTS());
}

Player::Player(const package::RecordingProject& project, SoundOutput& sound,
               const std::function<void()>& arrival)
    : sound_(sound), composition_(composePlayback(project)) {
  // A link in the place of the picture must not show another file of the user's.
  if (const auto file = package::packageFile(project.url, "screen.mov"); !file) {
    screenError_ = file.error().message;
  } else if (auto screen = media::PictureFeed::open(project.screenURL(), arrival)) {
    screen_ = std::move(*screen);
  } else {
    screenError_ = screen.error().message;
  }
  if (!screen_) package::log(package::LogCategory::preview).error("screen: {}", screenError_);
  openCamera(project, arrival);
  openSound();
}

Player::~Player() {
  sound_.stop();
}

void Player::openCamera(const package::RecordingProject& project,
                        const std::function<void()>& arrival) {
  const auto file = project.cameraURL();
  if (!file) return;
  auto camera = media::PictureFeed::open(*file, arrival);
  if (!camera) {
    package::log(package::LogCategory::preview).error("camera: {}", camera.error().message);
    return;
  }
  camera_ = std::move(*camera);
  cameraDelta_ = -compositor::cameraOffset(project.meta);
}

void Player::openSound() {
  std::vector<media::SoundClip> clips;
  for (const PlaybackTrack& track : composition_.tracks) {
    if (track.kind != PlaybackTrack::Kind::audio) continue;
    for (const TrackSegment& segment : track.segments) {
      if (segment.isEmpty) continue;
      clips.push_back({.file = track.file, .start = segment.target, .length = segment.length});
      soundTrackIDs_.push_back(track.id);
    }
  }
  soundTracks_ = std::make_unique<SoundTrackFeed>(clips);
}

std::vector<SyncedPlayer> Player::syncedPlayers() const {
  if (!camera_) return {};
  return {{.pictures = camera_.get(), .delta = cameraDelta_}};
}

double Player::screenTime(double time) const {
  // An export counts from the first picture in the same way.
  return time + screen_->firstPTS() + gridTolerance;
}

void Player::play(media::HostTime now) {
  if (isPlaying_) return;
  isPlaying_ = true;
  prepareSound(now);
}

void Player::pause(media::HostTime now) {
  start_ = currentTime(now);
  sound_.stop();
  soundDue_.reset();
  isPlaying_ = false;
}

void Player::seek(double seconds, media::HostTime now) {
  sound_.stop();
  start_ = seconds;
  if (isPlaying_) prepareSound(now);
  if (screen_) screen_->seek(screenTime(seconds));
  for (const SyncedPlayer& synced : syncedPlayers()) synced.pictures->seek(synced.time(seconds));
}

void Player::advance(media::HostTime now) {
  if (!soundDue_ || now < *soundDue_) return;
  soundDue_.reset();
  startSound();
}

/// Nothing reads meanwhile.
void Player::prepareSound(media::HostTime now) {
  soundTracks_->seek(start_);
  soundDue_ = now + startDelay;
}

void Player::startSound() {
  if (sound_.isAudible()) soundTracks_->waitForSound();
  sound_.start([this](std::span<media::StereoSample> out) { soundTracks_->read(out); });
}

double Player::currentTime(media::HostTime now) const {
  if (!isPlaying_ || soundDue_) return start_;
  return start_ + std::max(sound_.heard(now), 0.0);
}

std::optional<media::VideoFrame> Player::screenPicture(double time) const {
  if (!screen_) return std::nullopt;
  return screen_->pictureAt(screenTime(time));
}

std::optional<media::VideoFrame> Player::cameraPicture(double time) const {
  if (!camera_) return std::nullopt;
  return camera_->pictureAt(syncedPlayers().front().pictureTime(time));
}

bool Player::hasExactPictures(double time) const {
  const bool screenIsExact = !screen_ || screen_->isExactAt(screenTime(time));
  return screenIsExact && std::ranges::all_of(syncedPlayers(), [&](const SyncedPlayer& synced) {
           return synced.pictures->isExactAt(synced.pictureTime(time));
         });
}

void Player::waitForPictures(double time) const {
  if (screen_) static_cast<void>(screen_->waitForPictureAt(screenTime(time)));
  for (const SyncedPlayer& synced : syncedPlayers()) {
    static_cast<void>(synced.pictures->waitForPictureAt(synced.pictureTime(time)));
  }
}

void Player::setVolumes(double system, double mic) {
  const bool areAddressable = composition_.systemTrackID || composition_.micTrackID;
  volume_ = areAddressable ? 1.0F : static_cast<float>(media::usedGain(system));
  for (std::size_t clip = 0; clip < soundTrackIDs_.size(); ++clip) {
    const bool isMic = soundTrackIDs_[clip] == composition_.micTrackID;
    soundTracks_->setGain(clip, isMic ? mic : system);
  }
}

AudioDiagnostics Player::diagnostics() const {
  const auto audioTracks =
      std::ranges::count(composition_.tracks, PlaybackTrack::Kind::audio, &PlaybackTrack::kind);
  return {.exists = true,
          .rate = isPlaying_ ? 1.0F : 0.0F,
          .volume = volume_,
          .muted = !sound_.isAudible(),
          .trackCount = static_cast<int>(audioTracks),
          .statusText = screen_ ? "就绪" : "失败：" + screenError_};
}

}  // namespace vesk::editor
