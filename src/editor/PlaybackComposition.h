#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "package/RecordingProject.h"

namespace vesk::editor {

/// A stretch of a track, which plays its file from the beginning. An empty one plays nothing.
/// Seconds of the composition.
struct TrackSegment {
  double target = 0;  ///< where it begins
  double length = 0;
  bool isEmpty = false;
  bool operator==(const TrackSegment&) const = default;
};

struct PlaybackTrack {
  enum class Kind { video, audio };

  int id = 0;
  Kind kind = Kind::video;
  std::filesystem::path file;
  std::vector<TrackSegment> segments;  ///< without gaps between them
  bool operator==(const PlaybackTrack&) const = default;

  double start() const;
  double end() const;
};

/// What plays together, on the time line of the screen: the screen with the system's sound and,
/// beside them, the microphone at its true place.
struct PlaybackComposition {
  /// False when there is no microphone to be laid beside: the screen's file plays as it is.
  bool isComposed = false;
  double duration = 0;  ///< seconds
  std::vector<PlaybackTrack> tracks;
  std::optional<int> systemTrackID;  ///< only of a composed one
  std::optional<int> micTrackID;     ///< only of a composed one
  bool operator==(const PlaybackComposition&) const = default;
};

/// Lays out the media of a recording. A file that cannot be read has no track; what fails leaves
/// something simpler that still plays.
PlaybackComposition composePlayback(const package::RecordingProject& project);

/// One line for each track, for people.
std::vector<std::string> trackLayoutLines(const PlaybackComposition& composition);

/// What is wrong with the layout; empty when all is in order.
std::vector<std::string> trackLayoutWarnings(const PlaybackComposition& composition,
                                             const package::RecordingProject& project);

}  // namespace vesk::editor
