#include "editor/PlaybackComposition.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "media/SoundTrackInfo.h"
#include "media/VideoReader.h"
#include "package/PackageFile.h"

namespace vesk::editor {
namespace {

using TrackKind = PlaybackTrack::Kind;

constexpr int videoID = 1;
constexpr int systemID = 2;
constexpr int micID = 3;

/// Times of a composition lie on this grid, as an editor's time line does.
constexpr double timescale = 600;

double onGrid(double seconds) {
  return std::round(seconds * timescale) / timescale;
}

PlaybackTrack track(int id, TrackKind kind, std::filesystem::path file, double length) {
  PlaybackTrack made{.id = id, .kind = kind, .file = std::move(file), .segments = {}};
  if (length > 0) made.segments.push_back({.target = 0, .length = length});
  return made;
}

/// The screen's file as it plays by itself.
PlaybackComposition screenAlone(const package::RecordingProject& project) {
  PlaybackComposition composition;
  // A link in the place of the picture must not show another file of the user's.
  if (!package::packageFile(project.url, "screen.mov").value_or(std::nullopt)) return composition;
  const std::filesystem::path screen = project.screenURL();
  const auto movie = media::VideoReader::open(screen, 1);
  if (!movie) return composition;
  const double length = movie->info().duration;
  composition.tracks.push_back(track(videoID, TrackKind::video, screen, length));
  if (const auto sound = media::soundTrackInfo(screen)) {
    composition.tracks.push_back(
        track(systemID, TrackKind::audio, screen, std::min(sound->duration, length)));
  }
  composition.duration = length;
  return composition;
}

double micOffset(const package::RecordingMeta& meta) {
  if (!meta.micFirstSamplePTS || !meta.firstFramePTS) return 0;
  return onGrid(std::max(*meta.micFirstSamplePTS - *meta.firstFramePTS, 0.0));
}

std::string_view name(TrackKind kind) {
  return kind == TrackKind::video ? "视频" : "音频";
}

std::string describe(const TrackSegment& segment) {
  constexpr double source = 0;  // of every file its beginning
  return fmt::format("[目标 {:.3f}+{:.3f} ← 源 {:.3f}]", segment.target, segment.length, source);
}

}  // namespace

double PlaybackTrack::start() const {
  return segments.empty() ? 0 : segments.front().target;
}

double PlaybackTrack::end() const {
  return segments.empty() ? 0 : segments.back().target + segments.back().length;
}

PlaybackComposition composePlayback(const package::RecordingProject& project) {
  PlaybackComposition plain = screenAlone(project);
  const auto mic = project.micURL();
  const double duration = project.duration();
  if (!mic || !(duration > 0) || !std::isfinite(duration) || plain.tracks.empty()) return plain;

  // The composition must not become longer than the recording.
  const double end = onGrid(duration);
  PlaybackComposition composed = std::move(plain);
  composed.isComposed = true;
  for (PlaybackTrack& cut : composed.tracks) {
    for (TrackSegment& segment : cut.segments) segment.length = std::min(segment.length, end);
    if (cut.kind == TrackKind::audio) composed.systemTrackID = cut.id;
  }
  composed.duration = std::min(composed.duration, end);

  const double offset = micOffset(project.meta);
  const double remaining = end - offset;
  const auto sound = media::soundTrackInfo(*mic);
  if (!(remaining > 0) || !sound || !(sound->duration > 0)) return composed;
  const double length = std::min(remaining, sound->duration);
  PlaybackTrack added{.id = micID, .kind = TrackKind::audio, .file = *mic, .segments = {}};
  if (offset > 0) added.segments.push_back({.target = 0, .length = offset, .isEmpty = true});
  added.segments.push_back({.target = offset, .length = length});
  composed.tracks.push_back(std::move(added));
  composed.micTrackID = micID;
  composed.duration = std::max(composed.duration, offset + length);
  return composed;
}

std::vector<std::string> trackLayoutLines(const PlaybackComposition& composition) {
  if (!composition.isComposed) {
    return {"素材不是 composition（没有麦克风时就是原始 screen.mov）"};
  }
  std::vector<std::string> lines;
  for (const PlaybackTrack& track : composition.tracks) {
    std::string segments;
    for (const TrackSegment& segment : track.segments) segments += describe(segment);
    lines.push_back(fmt::format("{:<5} id={}  轨范围 {:.3f} → {:.3f}   {}", name(track.kind),
                                track.id, track.start(), track.end(), segments));
  }
  return lines;
}

std::vector<std::string> trackLayoutWarnings(const PlaybackComposition& composition,
                                             const package::RecordingProject& project) {
  constexpr double longestHole = 0.2;
  std::vector<std::string> warnings;
  const double duration = project.duration();
  if (composition.duration > duration * 1.05 + 0.5) {
    warnings.push_back(fmt::format("素材时长 {:.2f}s 远超录制时长 {:.2f}s —— 轨道被顶开了",
                                   composition.duration, duration));
  }
  std::size_t audioTracks = 0;
  for (const PlaybackTrack& track : composition.tracks) {
    for (const TrackSegment& segment : track.segments) {
      if (!segment.isEmpty || !(segment.length > longestHole)) continue;
      warnings.push_back(fmt::format("{}轨中间有 {:.2f}s 空洞", name(track.kind), segment.length));
    }
    if (track.kind != TrackKind::audio) continue;
    ++audioTracks;
    const bool hasContent = std::ranges::any_of(
        track.segments, [](const TrackSegment& segment) { return !segment.isEmpty; });
    if (!hasContent) warnings.push_back(fmt::format("轨 id={} 是空的", track.id));
  }
  if (project.micURL() && audioTracks < 2) {
    warnings.push_back(fmt::format("只有 {} 条音轨——麦克风没挂上", audioTracks));
  }
  return warnings;
}

}  // namespace vesk::editor
