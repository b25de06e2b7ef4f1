#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "media/HostTime.h"
#include "media/StereoSample.h"

struct pw_context;
struct pw_core;
struct pw_thread_loop;

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
  [[nodiscard]] bool isLost() const noexcept { return isLost_; }
  /// Whether there is a device that can take the sound.
  [[nodiscard]] bool hasDevice() const noexcept { return hasDevice_ && !isLost_; }

 private:
  class CoreListener;
  class Devices;
  class Stream;
  struct Library {
    Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library();
  };
  struct Release {
    void operator()(pw_thread_loop* loop) const noexcept;
    void operator()(pw_context* context) const noexcept;
    void operator()(pw_core* core) const noexcept;
  };

  explicit PlaybackStream(Take take);
  bool open(const std::string& remote);

  Library library_;
  Take take_;
  std::atomic<bool> isLost_ = false;
  std::atomic<bool> hasDevice_ = false;
  std::unique_ptr<pw_thread_loop, Release> loop_;
  std::unique_ptr<pw_context, Release> context_;
  std::unique_ptr<pw_core, Release> core_;
  std::unique_ptr<CoreListener> listener_;
  std::unique_ptr<Devices> devices_;
  std::unique_ptr<Stream> stream_;
};

}  // namespace vesk::editor::pipewire
