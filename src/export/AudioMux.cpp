#include "export/AudioMux.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "export/TemporaryFile.h"
#include "media/PictureDuration.h"
#include "media/SoundGain.h"
#include "media/SoundTrackInfo.h"
#include "package/FileError.h"
#include "package/Log.h"
#include "package/PackageFile.h"

namespace vesk::exporting {
namespace {

namespace fs = std::filesystem;
using media::Container;
using media::MediaError;

constexpr float audibleDifference = 0.001F;
constexpr double noticeableOffset = 0.05;  ///< seconds
constexpr double offsetsPerSecond = 600;   ///< the narration's start is kept in this unit

/// A track of the movie's sound.
struct Track {
  int id = 0;
  media::SoundClip clip;
  float gain = 1;
  bool isCopyable = true;  ///< the movie's container can hold it as it is
};

spdlog::logger& exportLog() {
  return package::log(package::LogCategory::exporting);
}

/// How long after the first picture the narration starts, in seconds.
double narrationOffset(const package::RecordingMeta& meta) {
  const double late = meta.micFirstSamplePTS.value_or(0) - meta.firstFramePTS.value_or(0);
  return late > 0 ? std::round(late * offsetsPerSecond) / offsetsPerSecond : 0;
}

std::optional<fs::path> sourceFile(const package::RecordingProject& project,
                                   std::string_view name) {
  return package::packageFile(project.url, name).value_or(std::nullopt);
}

Container containerOf(ExportSettings::Format format) {
  return format == ExportSettings::Format::mp4 ? Container::mp4 : Container::mov;
}

/// The sound of one export, on its way into the movie.
class AudioMux {
 public:
  AudioMux(const AudioOperations& operations, fs::path video, double duration, Container container)
      : operations_(operations),
        video_(std::move(video)),
        duration_(duration),
        container_(container) {}

  void addSystemSound(const fs::path& file, const media::SoundTrackInfo& info, double gain);
  void addNarration(const fs::path& file, const package::RecordingMeta& meta, double gain);
  std::expected<void, ExportError> run();

 private:
  using Outcome = std::expected<void, ExportError>;

  [[nodiscard]] bool needsMix() const;
  bool mixInto(const TemporaryFile& file) const;
  Outcome muxInto(TemporaryFile& file, std::vector<media::SoundClip> sounds) const;
  Outcome replaceVideo(TemporaryFile& file) const;
  [[nodiscard]] std::string gainText() const;
  [[nodiscard]] std::unexpected<ExportError> failure(std::string_view cause) const;

  const AudioOperations& operations_;
  fs::path video_;
  double duration_;
  Container container_;
  int nextId_ = 2;  ///< the picture is track 1
  std::vector<Track> tracks_;
};

void AudioMux::addSystemSound(const fs::path& file, const media::SoundTrackInfo& info,
                              double gain) {
  tracks_.push_back({.id = nextId_++,
                     .clip = {.file = file, .length = std::min(info.duration, duration_)},
                     .gain = static_cast<float>(media::usedGain(gain)),
                     .isCopyable = info.fits(container_)});
}

void AudioMux::addNarration(const fs::path& file, const package::RecordingMeta& meta, double gain) {
  const auto info = media::soundTrackInfo(file);
  if (!info) return;
  const int id = nextId_++;
  const double offset = narrationOffset(meta);
  const double length = std::min(info->duration, duration_ - offset);
  if (length > 0) {
    tracks_.push_back({.id = id,
                       .clip = {.file = file, .start = offset, .length = length},
                       .gain = static_cast<float>(media::usedGain(gain)),
                       .isCopyable = info->fits(container_)});
  }
  if (offset > noticeableOffset) {
    exportLog().info("mic aligned with +{:f}s offset", offset);
  }
}

bool AudioMux::needsMix() const {
  return std::ranges::any_of(tracks_, [](const Track& track) {
    return std::abs(track.gain - 1) > audibleDifference || !track.isCopyable;
  });
}

std::expected<void, ExportError> AudioMux::run() {
  if (tracks_.empty()) return {};
  const fs::path folder = video_.parent_path();
  const TemporaryFile mixed(folder, ".tqzn-audio-", ".m4a");
  TemporaryFile muxed(folder, ".tqzn-mux-", container_ == Container::mp4 ? ".mp4" : ".mov");
  std::vector<media::SoundClip> sounds;
  if (needsMix() && mixInto(mixed)) {
    sounds.push_back({.file = mixed.path(), .length = duration_});
  } else {
    for (const Track& track : tracks_) sounds.push_back(track.clip);
  }
  return muxInto(muxed, std::move(sounds));
}

/// False when the sound has to keep its recorded loudness.
bool AudioMux::mixInto(const TemporaryFile& file) const {
  media::SoundMix mix{.duration = duration_};
  for (const Track& track : tracks_) {
    mix.sources.push_back({.clip = track.clip, .gain = track.gain});
  }
  const auto outcome = operations_.mix(mix, file.path());
  if (outcome) {
    exportLog().info("audio gains applied: {}", gainText());
    return true;
  }
  if (outcome.error().kind != MediaError::Kind::unsupported) {
    exportLog().error("音量混音失败，按原始音量导出：{}", outcome.error().message);
  }
  return false;
}

std::expected<void, ExportError> AudioMux::muxInto(TemporaryFile& file,
                                                   std::vector<media::SoundClip> sounds) const {
  const auto outcome = operations_.remux(
      {.picture = video_, .sounds = std::move(sounds), .container = container_}, file.path());
  if (outcome) return replaceVideo(file);
  if (outcome.error().kind == MediaError::Kind::unsupported) {
    exportLog().error("无法创建混音会话，输出将不含音频");
    return {};
  }
  return failure(outcome.error().message);
}

/// Lets a new file be on the disk before it takes an older one's place. 0 or an errno value.
int flushToDisk(const fs::path& file) {
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  const int code = ::fsync(descriptor) == 0 ? 0 : errno;
  ::close(descriptor);
  return code;
}

std::expected<void, ExportError> AudioMux::replaceVideo(TemporaryFile& file) const {
  std::error_code ignored;
  fs::permissions(file.path(), fs::status(video_, ignored).permissions(), ignored);
  if (const int code = flushToDisk(file.path()); code != 0) {
    return failure(package::causeInWords(code));
  }
  std::error_code error;
  fs::rename(file.path(), video_, error);
  file.keep();
  if (!error) return {};
  return failure(fmt::format("{}，带声音的影片留在 “{}”", package::causeInWords(error.value()),
                             file.path().filename().string()));
}

std::string AudioMux::gainText() const {
  std::vector<std::string> entries;
  entries.reserve(tracks_.size());
  for (const Track& track : tracks_) entries.push_back(fmt::format("{}:{}", track.id, track.gain));
  return fmt::format("{}", fmt::join(entries, " "));
}

std::unexpected<ExportError> AudioMux::failure(std::string_view cause) const {
  return std::unexpected(ExportError::writerFailed(
      fmt::format("声音没有加进 “{}”，它仍是无声的：{}", video_.filename().string(), cause)));
}

}  // namespace

std::expected<void, ExportError> muxAudio(const package::RecordingProject& project,
                                          const fs::path& videoURL, ExportSettings::Format format,
                                          const AudioGains& gains,
                                          const AudioOperations& operations) {
  const auto screen = sourceFile(project, "screen.mov");
  const auto mic = sourceFile(project, "mic.m4a");
  const auto system = screen ? media::soundTrackInfo(*screen) : std::nullopt;
  if (!mic && !system) return {};
  // A link stays a link: its target is the movie.
  std::error_code error;
  const fs::path video = fs::canonical(videoURL, error);
  if (error) return {};
  const auto duration = media::pictureDuration(video);
  if (!duration) return {};

  AudioMux mux(operations, video, *duration, containerOf(format));
  if (system) mux.addSystemSound(*screen, *system, gains.system);
  if (mic) mux.addNarration(*mic, project.meta, gains.mic);
  return mux.run();
}

}  // namespace vesk::exporting
