#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "media/HostTime.h"
#include "media/StereoSample.h"
#include "media/pipewire/Connection.h"

namespace vesk::editor::pipewire {

/// A stream to the default output device, whichever that is at the time, over a connection of its
/// own. At rest until it is made active. All calls from one thread; none of them waits for the
/// server.
class PlaybackStream {
 public:
  /// Fills the samples, of which the first is heard at `heardAt`, on the stream's data thread. All
  /// times are of CLOCK_MONOTONIC.
  using Take = std::function<void(std::span<media::StereoSample> samples, media::HostTime now,
                                  media::HostTime heardAt)>;

  /// @param remote the path of the server's socket, or its name; empty for that of the environment.
  /// @return null where no server is there.
  [[nodiscard]] static std::unique_ptr<PlaybackStream> connect(const std::string& remote,
                                                               Take take);

  PlaybackStream(const PlaybackStream&) = delete;
  PlaybackStream& operator=(const PlaybackStream&) = delete;
  ~PlaybackStream();

  /// Lets samples be taken, or no more. What was taken and not yet heard is dropped.
  void setActive(bool isActive);

  /// Whether the server went away; the stream is of no use then.
  [[nodiscard]] bool isLost() const noexcept { return connection_->isLost(); }
  /// Whether there is a device that can take the sound.
  [[nodiscard]] bool hasDevice() const noexcept { return hasDevice_ && !isLost(); }

 private:
  class Devices;
  class Stream;

  explicit PlaybackStream(Take take);
  bool open(const std::string& remote);

  Take take_;
  std::atomic<bool> hasDevice_ = false;
  std::unique_ptr<media::pipewire::Connection> connection_;
  std::unique_ptr<Devices> devices_;
  std::unique_ptr<Stream> stream_;
};

}  // namespace vesk::editor::pipewire
