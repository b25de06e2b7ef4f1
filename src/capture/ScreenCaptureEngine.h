#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "capture/CaptureError.h"
#include "capture/DisplayGeometry.h"
#include "capture/Geometry.h"
#include "capture/ScreenSource.h"
#include "capture/SoundSource.h"
#include "capture/TakeMovie.h"
#include "media/CaptureEncoder.h"
#include "media/HostTime.h"
#include "media/PicturePool.h"
#include "package/CaptureScope.h"

namespace vesk::capture {

/// Turns what is on the screen, and what the computer plays, into "screen.mov". Only pictures that
/// show something new are written; when the screen has stood still at the end, the last one is
/// written once more, so that the movie is as long as the take. One is reused for every take of a
/// session.
class ScreenCaptureEngine {
 public:
  struct Config {
    std::uint32_t displayID = 0;
    package::CaptureScope scope;
    int fps = 60;
    double bppCoefficient = 0.05;  ///< bits per pixel and frame
    std::filesystem::path outputURL;
    bool capturesSystemAudio = false;
  };

  /// How a take went. Times are seconds of the take's clock. What counts pictures and content
  /// rectangles counts on over all takes of the engine.
  struct Report {
    std::optional<double> firstFramePTS;
    std::int64_t droppedFrames = 0;  ///< pictures for which the writer had no room
    bool interrupted = false;
    std::optional<std::string> interruptReason;
    std::int64_t completeFrames = 0;  ///< pictures that were written
    std::int64_t idleFrames = 0;      ///< looks at the screen that showed nothing new
    std::optional<double> lastCompletePTS;
    std::optional<double> lastAnyPTS;
    std::optional<package::Rect> firstContentRect;
    std::optional<package::Rect> lastContentRect;
    std::int64_t contentRectChanges = 0;
    bool operator==(const Report&) const = default;
  };

  /// The encoder for pictures of this size and rate. May take a second or two.
  using ChooseEncoder =
      std::function<media::CaptureEncoder(const media::PictureTrackSettings& settings)>;

  /// What the engine works with; all of it must outlive the engine.
  struct Seams {
    ScreenSource& screen;
    SoundSource& systemSound;
    const DisplayGeometry& geometry;
    ChooseEncoder chooseEncoder;
    OpenTakeMovie openMovie;
  };

  explicit ScreenCaptureEngine(Seams seams);
  ScreenCaptureEngine(const ScreenCaptureEngine&) = delete;
  ScreenCaptureEngine& operator=(const ScreenCaptureEngine&) = delete;
  /// Stops.
  ~ScreenCaptureEngine();

  // To be set while no take runs. Both are called on threads of the streams.

  /// The take cannot go on, for this reason; it has to be stopped.
  std::function<void(const std::string&)> onInterrupt;
  /// The time of the first picture, which is the movie's time zero.
  std::function<void(double seconds)> onFirstFrame;

  // These two wait; they may be called from any one thread at a time.

  /// Returns once pictures come. After a failure stop() closes what was opened.
  std::expected<void, CaptureError> start(const Config& config);
  /// Completes the file. Without a start before it, it does nothing.
  Report stop();

  // Of the running or last take.
  int pixelWidth() const { return size_.width; }
  int pixelHeight() const { return size_.height; }
  double scaleFactor() const { return scaleFactor_; }

 private:
  std::expected<void, CaptureError> openMovie(const Config& config);
  std::expected<void, CaptureError> startStreams(const Config& config,
                                                 const ScreenRequest& request);
  void listenToSystemSound();
  void receive(const ScreenFrame& frame);
  void receive(const media::SoundBlock& sound);
  void receiveEnd(const ScreenStreamEnd& end);
  void receiveSoundEnd(const std::string& cause);
  void interrupt(const std::string& reason);

  // With the mutex held.
  void track(const package::Rect& contentRect);
  void write(TakeMovie::Picture picture, media::HostTime stamp);
  bool isWritable(std::string& interruption);
  void appendStaticTail();
  Report report() const;

  Seams seams_;
  PixelSize size_;
  double scaleFactor_ = 2.0;
  std::optional<media::PicturePool> pool_;

  std::mutex mutex_;  ///< guards what follows, up to the streams
  std::unique_ptr<TakeMovie> movie_;
  bool hasSound_ = false;
  bool sessionStarted_ = false;
  std::int64_t systemAudioSamples_ = 0;
  std::optional<media::HostTime> firstPTS_;
  std::optional<media::HostTime> lastPTS_;  ///< in the file
  std::optional<media::HostTime> lastAnyPTS_;
  std::optional<media::HostTime> lastCompletePTS_;
  std::int64_t completeFrames_ = 0;
  std::int64_t idleFrames_ = 0;
  std::optional<package::Rect> firstContentRect_;
  std::optional<package::Rect> lastContentRect_;
  std::int64_t contentRectChanges_ = 0;
  std::int64_t dropped_ = 0;
  bool interrupted_ = false;
  std::optional<std::string> interruptReason_;

  // They end before what they touch.
  std::unique_ptr<Listening> soundStream_;
  std::unique_ptr<Listening> screenStream_;
};

}  // namespace vesk::capture
