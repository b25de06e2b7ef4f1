#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "capture/CameraSource.h"
#include "capture/Geometry.h"
#include "capture/Listening.h"
#include "capture/TakeMovie.h"
#include "media/PictureFitter.h"
#include "media/PicturePool.h"

namespace vesk::capture {

/// Writes what a camera sees into "camera.mov", with a clock start of its own. A failure on the way
/// never ends the take; it is kept for its end. One is reused for every take of a session.
class CameraRecorder {
 public:
  /// Why no recording began. `message` is for the user.
  struct CameraError {
    enum class Kind : std::uint8_t { writerSetupFailed, noDevice, cannotAddInput, deviceFailed };
    Kind kind = Kind::noDevice;
    std::string message;
    bool operator==(const CameraError&) const = default;
  };

  /// @param camera must outlive the recorder.
  CameraRecorder(CameraSource& camera, OpenTakeMovie openMovie);
  CameraRecorder(const CameraRecorder&) = delete;
  CameraRecorder& operator=(const CameraRecorder&) = delete;
  /// Stops.
  ~CameraRecorder();

  std::vector<CameraDevice> devices() const { return camera_.devices(); }

  // These two wait; they may be called from any one thread at a time.

  /// @param device nothing: the first there is.
  std::expected<void, CameraError> start(const std::optional<CameraDevice>& device,
                                         const std::filesystem::path& url);
  /// Completes the file; a camera that has given no picture leaves none. Without a start before it,
  /// it does nothing.
  void stop();

  // Seconds of the take's clock.

  /// Nothing while no picture has come.
  std::optional<double> firstFramePTS() const;
  /// Of the first picture that was not black; the first of all takes.
  std::optional<double> firstLitFramePTS() const;
  /// What went wrong on the way, a phrase for the user; the first failure of all takes.
  std::optional<std::string> failure() const;

 private:
  void receive(const CameraFrame& frame);
  void receiveEnd(const std::string& cause);

  // With the mutex held.
  bool begin(const CameraFrame& frame);
  bool isWritable();
  void write(const CameraFrame& frame);
  void fail(std::string reason);

  CameraSource& camera_;
  OpenTakeMovie openMovie_;
  media::PicturePool pool_;

  mutable std::mutex mutex_;  ///< guards what follows, up to the stream
  media::PictureFitter fitter_;
  std::optional<std::filesystem::path> url_;  ///< while a take runs
  std::unique_ptr<TakeMovie> movie_;          ///< from the first picture on
  bool started_ = false;
  std::optional<double> firstFramePTS_;
  std::int64_t frameCount_ = 0;
  PixelSize pixelSize_;  ///< of the first picture
  std::optional<std::string> failure_;
  std::optional<double> firstLitFramePTS_;

  std::unique_ptr<Listening> stream_;  ///< ends before what it touches
};

}  // namespace vesk::capture
