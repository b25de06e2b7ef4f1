#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>

#include "media/LibavHandles.h"
#include "media/MediaError.h"

struct AVRational;
struct AVStream;

namespace vesk::media {

/// The kinds of file that grow while a take runs: QuickTime, or MPEG-4 with sound alone.
enum class GrowingFile { quickTime, sound };

/// Puts packets into a movie file in fragments: what cut() has written can be played whatever
/// becomes of the process. Where writing fails, the file goes back to its last cut.
class FragmentWriter {
 public:
  /// Creates the file, in the place of one that is there.
  [[nodiscard]] static std::expected<FragmentWriter, MediaError> create(
      const std::filesystem::path& file, GrowingFile kind);

  FragmentWriter(const FragmentWriter&) = delete;
  FragmentWriter(FragmentWriter&&) noexcept = default;
  FragmentWriter& operator=(const FragmentWriter&) = delete;
  FragmentWriter& operator=(FragmentWriter&&) = delete;
  ~FragmentWriter() = default;

  /// A new track for what this encoder makes, with stamps in units of `tick` seconds; null without
  /// memory.
  /// @param tag what the file calls the codec, or 0 to leave it to libav.
  [[nodiscard]] const AVStream* addTrack(const AVCodecContext& encoder, AVRational tick,
                                         unsigned tag);
  /// To be called once all tracks are there.
  [[nodiscard]] std::expected<void, MediaError> start();

  /// Takes in a packet with its stamps and its duration in the track's ticks; leaves it blank.
  [[nodiscard]] std::expected<void, MediaError> write(AVPacket& packet, const AVStream& track);
  /// Writes what has been taken in as a fragment. A track without a packet until the first cut has
  /// no start, so that nothing is told of it: each track should have one by then.
  [[nodiscard]] std::expected<void, MediaError> cut();
  /// Cuts and closes the file.
  [[nodiscard]] std::expected<void, MediaError> finish();

 private:
  FragmentWriter(OutputPtr output, std::filesystem::path file);
  std::expected<void, MediaError> conclude(int status);

  OutputPtr output_;  ///< null once closed
  std::filesystem::path file_;
  std::uint64_t written_ = 0;  ///< bytes up to the last cut
  bool hasIndex_ = false;
};

}  // namespace vesk::media
