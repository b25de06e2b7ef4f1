#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "media/CaptureWriter.h"
#include "media/HostTime.h"
#include "media/MediaError.h"
#include "media/SoundClock.h"

namespace vesk::media {

/// Writes a movie while a take runs, on a thread of its own: those who deliver pictures and sound
/// never wait for the encoder. All calls may come from any thread; pictures in the order of their
/// stamps, and sound in its own. For what becomes of the file see CaptureWriter.
class CaptureMovie {
 public:
  using Picture = CaptureWriter::Picture;
  using Outcome = CaptureWriter::Outcome;
  using OnFailure = std::move_only_function<void(const MediaError&)>;

  enum class State : std::uint8_t {
    idle,     ///< nothing has come yet of which the movie could consist
    writing,  ///< since its first picture, or its first sound where it has no pictures
    failed,   ///< the file keeps what had been written for good; all that still comes is lost
  };
  struct Status {
    State state = State::idle;
    std::optional<MediaError> failure;  ///< of a movie that failed
    bool operator==(const Status&) const = default;
  };

  /// How many pictures wait for the encoder at most, besides the one that is being encoded.
  static constexpr std::size_t pictureRoom = 6;
  /// How much sound waits at most.
  static constexpr HostTime soundRoom = std::chrono::seconds(10);

  /// Creates the file, in the place of one that is there, and returns when the encoders are ready.
  /// @param onFailure called at most once, on the thread of the movie, when the movie fails before
  /// finish() is called or while finish() waits. Must not call finish() or destroy the movie.
  [[nodiscard]] static std::expected<CaptureMovie, MediaError> create(
      const std::filesystem::path& file, const CaptureSettings& settings, OnFailure onFailure = {});

  CaptureMovie(const CaptureMovie&) = delete;
  CaptureMovie(CaptureMovie&&) noexcept;
  CaptureMovie& operator=(const CaptureMovie&) = delete;
  CaptureMovie& operator=(CaptureMovie&&) noexcept;
  /// Finishes the movie.
  ~CaptureMovie();

  /// Takes in a picture of the settings' size, which must not change any more. Does not wait: false
  /// when there is no room for it, and once the movie has failed or is finished.
  bool offer(Picture picture, HostTime stamp);
  /// Takes in a copy of the samples. Does not wait: false when soundRoom is full, and once the
  /// movie has failed or is finished. Where the movie has pictures, what is before the first of
  /// them is left out.
  bool offer(const SoundBlock& sound);
  /// Tells that there is nothing new to be seen up to now. To be called for every look at a screen
  /// that stands still: it keeps the part of the movie small that has not been written for good.
  void stillAt(HostTime now);
  /// Shows the latest picture up to a time: it is appended once more with that stamp. Without a
  /// picture, or where the latest is not earlier, does nothing.
  void repeatLatest(HostTime stamp);

  [[nodiscard]] Status status() const;

  /// Waits until all that was taken in is written, and completes the file; one into which nothing
  /// came is removed. Nothing is taken in any more. Gives the same outcome each time.
  Outcome finish();

 private:
  class Writing;
  explicit CaptureMovie(std::unique_ptr<Writing> writing);
  std::unique_ptr<Writing> writing_;
};

}  // namespace vesk::media
