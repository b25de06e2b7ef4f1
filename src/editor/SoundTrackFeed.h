#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "media/SoundClip.h"
#include "media/StereoSample.h"

namespace vesk::editor {

/// The sound of a recording while it plays: several clips, each with a gain of its own that may be
/// changed at any time, mixed and kept below full scale as an export does. A thread of its own
/// decodes ahead.
class SoundTrackFeed {
 public:
  /// Opens the clips; one that cannot be read is silent. The gains are 1.
  explicit SoundTrackFeed(const std::vector<media::SoundClip>& clips);
  SoundTrackFeed(const SoundTrackFeed&) = delete;
  SoundTrackFeed& operator=(const SoundTrackFeed&) = delete;
  ~SoundTrackFeed();

  /// Sets the gain of a clip, a factor of 0…2, from any thread. It slides there within 10 ms, so
  /// that nothing clicks.
  void setGain(std::size_t clip, double gain);

  /// Moves to the sample at `time` seconds and has it decoded from there on. Not while something
  /// reads. What the gains are by the first read is there at once.
  void seek(double time);

  /// Returns when there is sound to play from where it was moved to, or after 0.2 s.
  void waitForSound();

  /// Gives the samples that follow, behind the end of all clips silence. Neither allocates nor
  /// waits for the decoder: where it is late there is silence, and what came too late is left out,
  /// so that the sound stays in its place. To be called by one thread at a time.
  void read(std::span<media::StereoSample> out);

 private:
  class Worker;
  std::unique_ptr<Worker> worker_;
};

}  // namespace vesk::editor
