#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "capture/Listening.h"
#include "capture/SoundSource.h"
#include "capture/TakeMovie.h"

namespace vesk::capture {

/// Writes what the microphone hears into "mic.m4a", with a clock start of its own. A failure on the
/// way never ends the take; it is kept for its end. One is reused for every take of a session.
class MicrophoneRecorder {
 public:
  /// Why no recording began. `message` is for the user.
  struct MicError {
    enum class Kind : std::uint8_t { sessionSetupFailed, writerSetupFailed, noDevice };
    Kind kind = Kind::noDevice;
    std::string message;
    bool operator==(const MicError&) const = default;
  };

  /// @param microphone must outlive the recorder.
  MicrophoneRecorder(SoundSource& microphone, OpenTakeMovie openMovie);
  MicrophoneRecorder(const MicrophoneRecorder&) = delete;
  MicrophoneRecorder& operator=(const MicrophoneRecorder&) = delete;
  /// Stops.
  ~MicrophoneRecorder();

  // These two wait; they may be called from any one thread at a time.

  std::expected<void, MicError> start(const std::filesystem::path& url);
  /// Completes the file. Without a start before it, it does nothing.
  void stop();

  /// Seconds of the take's clock; nothing while nothing has been heard.
  std::optional<double> firstSamplePTS() const;
  /// What went wrong on the way, a phrase for the user; the first failure of all takes.
  std::optional<std::string> failure() const;

 private:
  void receive(const media::SoundBlock& sound);
  void fail(std::string reason);

  SoundSource& microphone_;
  OpenTakeMovie openMovie_;

  mutable std::mutex mutex_;  ///< guards what follows, up to the stream
  std::unique_ptr<TakeMovie> movie_;
  std::optional<double> firstSamplePTS_;
  std::int64_t sampleCount_ = 0;
  std::optional<std::string> failure_;

  std::unique_ptr<Listening> stream_;  ///< ends before what it touches
};

}  // namespace vesk::capture
