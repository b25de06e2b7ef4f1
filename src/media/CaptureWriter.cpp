#include "media/CaptureWriter.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <system_error>
#include <utility>
#include <vector>

#include "media/FragmentJoining.h"
#include "media/LibavError.h"
#include "media/PictureEncoder.h"
#include "media/StereoSample.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Kind = MediaError::Kind;

constexpr std::int64_t keyFrameTicks = std::int64_t{2} * pictureTicks;
constexpr std::int64_t lastPictureTicks = pictureTicks / 60;
constexpr std::int64_t longestStandingTicks = std::int64_t{8} * pictureTicks;
/// After this much sound a part is written without waiting for a key frame.
constexpr std::int64_t longestSoundPart = std::int64_t{4} * soundRate;
constexpr HostTime longestSoundDelay = 1s;

std::int64_t ticksOf(HostTime time) {
  constexpr std::int64_t nanosecondsInThreeTicks = 3'000'000'000 / pictureTicks;
  const std::int64_t tripled = 3 * time.count();
  return (tripled + nanosecondsInThreeTicks / 2) / nanosecondsInThreeTicks;
}

MediaError cannotEncode(int code, const fs::path& file) {
  const bool isUnknown = code == AVERROR_ENCODER_NOT_FOUND || code == AVERROR(EINVAL);
  return writingError(isUnknown ? Kind::unsupported : Kind::encodeFailed, code, file);
}

}  // namespace

class CaptureWriter::Recording {
 public:
  Recording(fs::path file, FragmentWriter output)
      : file_(std::move(file)), output_(std::move(output)) {}

  Outcome start(const CaptureSettings& settings);
  Outcome write(Picture picture, HostTime stamp);
  Outcome write(const SoundBlock& block);
  Outcome repeatLatest(HostTime stamp);
  Outcome stillAt(HostTime now);
  Outcome finish();

 private:
  Outcome openTracks(const CaptureSettings& settings);
  void begin(HostTime zero);
  Outcome storePictures();
  Outcome storeHeld(std::int64_t end);
  Outcome storeSound();
  Outcome takeSound();
  Outcome cut();
  Outcome encoderFailed(int code);
  Outcome remember(Outcome outcome);

  fs::path file_;
  FragmentWriter output_;
  std::optional<MediaError> failure_;
  std::optional<HostTime> zero_;  ///< of the movie

  std::optional<PictureEncoder> pictures_;
  const AVStream* pictureTrack_ = nullptr;
  Picture latest_;
  std::int64_t latestTime_ = -1;
  std::int64_t keyTime_ = 0;
  std::vector<PacketPtr> pictureQueue_;
  PacketPtr held_;  ///< waits for the next picture to tell how long it stands

  std::optional<SoundEncoder> sound_;
  std::optional<SoundTrackSettings> soundSettings_;
  const AVStream* soundTrack_ = nullptr;
  std::optional<SoundClock> clock_;
  int soundStatus_ = 0;
  std::vector<PacketPtr> soundQueue_;
  std::int64_t soundEnd_ = 0;  ///< of what has been stored, in samples
  std::int64_t soundCut_ = 0;  ///< the same at the last cut
};

CaptureWriter::Outcome CaptureWriter::Recording::start(const CaptureSettings& settings) {
  assert(settings.pictures || settings.sound);
  if (auto opened = openTracks(settings); !opened) {
    std::error_code ignored;
    fs::remove(file_, ignored);
    return opened;
  }
  return remember(output_.start());
}

CaptureWriter::Outcome CaptureWriter::Recording::openTracks(const CaptureSettings& settings) {
  if (settings.pictures) {
    auto encoder = PictureEncoder::open(settings.encoder, *settings.pictures);
    if (!encoder) {
      return std::unexpected(cannotEncode(encoder.error(), file_));
    }
    pictures_ = *std::move(encoder);
    pictureTrack_ = output_.addTrack(pictures_->codec(), {1, pictureTicks}, pictures_->tag());
  }
  if (settings.sound) {
    auto encoder = SoundEncoder::open(*settings.sound);
    if (!encoder) {
      return std::unexpected(cannotEncode(encoder.error(), file_));
    }
    sound_ = *std::move(encoder);
    soundSettings_ = settings.sound;
    soundTrack_ = output_.addTrack(sound_->codec(), {1, soundRate}, 0);
  }
  const bool isComplete = (pictures_.has_value() == (pictureTrack_ != nullptr)) &&
                          (sound_.has_value() == (soundTrack_ != nullptr));
  return isComplete ? Outcome{} : encoderFailed(AVERROR(ENOMEM));
}

void CaptureWriter::Recording::begin(HostTime zero) {
  zero_ = zero;
  if (sound_) {
    clock_.emplace(soundSettings_->channels, zero, [this](std::span<const float> samples) {
      if (soundStatus_ >= 0) {
        soundStatus_ = sound_->encode(samples, soundQueue_);
      }
    });
  }
}

CaptureWriter::Outcome CaptureWriter::Recording::write(Picture picture, HostTime stamp) {
  assert(pictures_);
  if (failure_) {
    return std::unexpected(*failure_);
  }
  if (!zero_) {
    begin(stamp);
  }
  const std::int64_t time = ticksOf(stamp - *zero_);
  if (time <= latestTime_) {
    return {};
  }
  // Sound that is still missing does not hold up what is to be written for good.
  if (clock_) {
    clock_->fillUntil(stamp - longestSoundDelay);
    if (auto stored = takeSound(); !stored) {
      return stored;
    }
  }
  const bool isKey = latestTime_ < 0 || time - keyTime_ >= keyFrameTicks;
  if (isKey) {
    keyTime_ = time;
  }
  if (const int status = pictures_->encode(*picture, time, isKey, pictureQueue_); status < 0) {
    return encoderFailed(status);
  }
  latest_ = std::move(picture);
  latestTime_ = time;
  return storePictures();
}

CaptureWriter::Outcome CaptureWriter::Recording::repeatLatest(HostTime stamp) {
  return latest_ == nullptr ? Outcome{} : write(latest_, stamp);
}

CaptureWriter::Outcome CaptureWriter::Recording::stillAt(HostTime now) {
  const bool isDue =
      latest_ != nullptr && ticksOf(now - *zero_) - latestTime_ >= longestStandingTicks;
  return isDue ? write(latest_, now) : Outcome{};
}

CaptureWriter::Outcome CaptureWriter::Recording::write(const SoundBlock& block) {
  assert(sound_);
  if (failure_) {
    return std::unexpected(*failure_);
  }
  if (!zero_ && pictures_) {
    return {};
  }
  if (!zero_) {
    begin(block.stamp);
  }
  clock_->push(block);
  return takeSound();
}

CaptureWriter::Outcome CaptureWriter::Recording::storePictures() {
  for (PacketPtr& packet : std::exchange(pictureQueue_, {})) {
    if (auto stored = storeHeld(packet->pts); !stored) {
      return stored;
    }
    const bool isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
    const bool isFirst = packet->pts == 0;
    held_ = std::move(packet);
    if (isKey && !isFirst) {
      if (auto written = cut(); !written) {
        return written;
      }
    }
  }
  return {};
}

/// Stores the picture that is held back, now that its end is known.
CaptureWriter::Outcome CaptureWriter::Recording::storeHeld(std::int64_t end) {
  if (held_ == nullptr) {
    return {};
  }
  held_->duration = end - held_->pts;
  const PacketPtr packet = std::move(held_);
  return remember(output_.write(*packet, *pictureTrack_));
}

CaptureWriter::Outcome CaptureWriter::Recording::takeSound() {
  return soundStatus_ < 0 ? encoderFailed(soundStatus_) : storeSound();
}

CaptureWriter::Outcome CaptureWriter::Recording::storeSound() {
  for (const PacketPtr& packet : std::exchange(soundQueue_, {})) {
    soundEnd_ = packet->pts + packet->duration;
    if (auto stored = remember(output_.write(*packet, *soundTrack_)); !stored) {
      return stored;
    }
    if (soundEnd_ - soundCut_ >= longestSoundPart) {
      if (auto written = cut(); !written) {
        return written;
      }
    }
  }
  return {};
}

CaptureWriter::Outcome CaptureWriter::Recording::cut() {
  soundCut_ = soundEnd_;
  return remember(output_.cut());
}

CaptureWriter::Outcome CaptureWriter::Recording::finish() {
  if (failure_) {
    return std::unexpected(*failure_);
  }
  if (!zero_) {
    std::error_code ignored;
    fs::remove(file_, ignored);
    return {};
  }
  if (pictures_) {
    if (const int status = pictures_->finish(pictureQueue_); status < 0) {
      return encoderFailed(status);
    }
    auto stored = storePictures();
    if (stored) {
      stored = storeHeld(latestTime_ + lastPictureTicks);
    }
    if (!stored) {
      return stored;
    }
  }
  if (clock_) {
    clock_->finish();
    if (soundStatus_ >= 0) {
      soundStatus_ = sound_->finish(soundQueue_);
    }
    if (auto stored = takeSound(); !stored) {
      return stored;
    }
  }
  auto finished = remember(output_.finish());
  return finished ? joinFragments(file_) : finished;
}

CaptureWriter::Outcome CaptureWriter::Recording::encoderFailed(int code) {
  return remember(std::unexpected(writingError(Kind::encodeFailed, code, file_)));
}

CaptureWriter::Outcome CaptureWriter::Recording::remember(Outcome outcome) {
  if (!outcome) {
    failure_ = outcome.error();
  }
  return outcome;
}

std::expected<CaptureWriter, MediaError> CaptureWriter::create(const fs::path& file,
                                                               const CaptureSettings& settings) {
  auto output = FragmentWriter::create(file, settings.kind);
  if (!output) {
    return std::unexpected(std::move(output.error()));
  }
  auto recording = std::make_unique<Recording>(file, *std::move(output));
  if (auto started = recording->start(settings); !started) {
    return std::unexpected(std::move(started.error()));
  }
  return CaptureWriter(std::move(recording));
}

CaptureWriter::CaptureWriter(std::unique_ptr<Recording> recording)
    : recording_(std::move(recording)) {}
CaptureWriter::CaptureWriter(CaptureWriter&&) noexcept = default;
CaptureWriter& CaptureWriter::operator=(CaptureWriter&&) noexcept = default;
CaptureWriter::~CaptureWriter() = default;

CaptureWriter::Outcome CaptureWriter::write(Picture picture, HostTime stamp) {
  return recording_->write(std::move(picture), stamp);
}

CaptureWriter::Outcome CaptureWriter::repeatLatest(HostTime stamp) {
  return recording_->repeatLatest(stamp);
}

CaptureWriter::Outcome CaptureWriter::stillAt(HostTime now) {
  return recording_->stillAt(now);
}

CaptureWriter::Outcome CaptureWriter::write(const SoundBlock& sound) {
  return recording_->write(sound);
}

CaptureWriter::Outcome CaptureWriter::finish() {
  return recording_->finish();
}

}  // namespace vesk::media
