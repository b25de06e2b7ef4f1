#pragma once

#include <expected>
#include <filesystem>

#include "media/LibavHandles.h"
#include "media/MediaError.h"
#include "media/VideoSettings.h"

struct AVCodecParameters;
struct AVRational;
struct AVStream;

namespace vesk::media {

/// libav's name of a container.
[[nodiscard]] const char* muxerName(Container container);

/// Whether a container can hold a track of this kind as it is.
[[nodiscard]] bool canHold(Container container, const AVCodecParameters& kind);

/// A movie file in the making, for packets that are ready. Unless it is finished, the file is
/// removed again.
class MovieOutput {
 public:
  /// Creates the file, which must not be there yet.
  /// @param muxer libav's name of the format.
  /// @param shownAs the file that errors name.
  [[nodiscard]] static std::expected<MovieOutput, MediaError> create(
      const std::filesystem::path& file, const char* muxer, const std::filesystem::path& shownAs);

  MovieOutput(const MovieOutput&) = delete;
  MovieOutput(MovieOutput&&) noexcept = default;
  MovieOutput& operator=(const MovieOutput&) = delete;
  MovieOutput& operator=(MovieOutput&&) = delete;
  ~MovieOutput();

  /// A new track of this kind, to be played together with all others; null without memory.
  /// @param tick the unit that its stamps should have, in seconds.
  [[nodiscard]] AVStream* addTrack(const AVCodecParameters& kind, AVRational tick);
  /// Whether a track has to have its decoder's set-up in front of its packets.
  [[nodiscard]] bool needsGlobalHeader() const;

  /// Writes what stands in front of the packets; from now on the tracks tell the unit of their
  /// stamps.
  [[nodiscard]] std::expected<void, MediaError> start();
  /// Writes a packet with a track's index and stamps in its unit. Packets have to come in order of
  /// their decoding stamps.
  /// @return libav's code for a packet that is refused, 0 or more for one that is not.
  [[nodiscard]] std::expected<int, MediaError> write(AVPacket& packet);
  /// Completes the movie and closes the file. Nothing may be written afterwards.
  [[nodiscard]] std::expected<void, MediaError> finish();

 private:
  MovieOutput(OutputPtr output, std::filesystem::path file, std::filesystem::path shownAs);
  [[nodiscard]] std::unexpected<MediaError> failure(int code) const;

  OutputPtr output_;  ///< null once finished
  std::filesystem::path file_;
  std::filesystem::path shownAs_;
};

}  // namespace vesk::media
