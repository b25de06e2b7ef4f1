#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vesk::capture::v4l2 {

/// The system calls by which a camera is driven, as a seam: a test can be the camera. Results and
/// errno are those of the calls themselves.
class VideoDeviceCalls {
 public:
  virtual ~VideoDeviceCalls() = default;

  /// The paths of all video devices, in the order of their numbers.
  virtual std::vector<std::string> paths() = 0;
  virtual int open(const char* path) = 0;  ///< to read and write, without waiting
  virtual int close(int descriptor) = 0;
  virtual int control(int descriptor, unsigned long request, void* argument) = 0;  ///< ioctl
  virtual void* map(int descriptor, std::size_t size, std::size_t offset) = 0;  ///< null on failure
  virtual int unmap(void* memory, std::size_t size) = 0;
  /// Waits for a frame: 1 when there is one, 0 after 100 ms, −1 on failure.
  virtual int waitForFrame(int descriptor) = 0;
};

/// The calls of the operating system. May be used from any thread.
VideoDeviceCalls& systemVideoDeviceCalls();

}  // namespace vesk::capture::v4l2
