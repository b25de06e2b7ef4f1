#pragma once

#include <linux/videodev2.h>

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "capture/Geometry.h"
#include "capture/v4l2/VideoDeviceCalls.h"
#include "media/HostTime.h"

namespace vesk::capture::v4l2::test {

/// A kernel with one camera. May be used from any thread.
class FakeVideoDevice final : public VideoDeviceCalls {
 public:
  struct Format {
    std::uint32_t fourcc = 0;
    std::vector<PixelSize> sizes;
    int framesPerSecond = 30;
  };
  struct Options {
    std::string path = "/dev/video0";
    std::string card = "USB 摄像头";
    std::uint32_t abilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    std::vector<Format> formats{{V4L2_PIX_FMT_YUYV, {{1280, 720}}, 30}};
    int openError = 0;          ///< errno of open
    int formatError = 0;        ///< errno of the setting of the format
    int streamError = 0;        ///< errno of the start
    std::uint32_t padding = 0;  ///< bytes behind each row
  };

  explicit FakeVideoDevice(Options options) : options_{std::move(options)} {}

  struct Frame {
    std::vector<std::uint8_t> bytes;
    media::HostTime stamp{};
    std::uint32_t flags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
  };
  /// Fills the next of the memory that the driver was given.
  void take(Frame frame);
  void unplug();

  [[nodiscard]] PixelSize chosenSize() const;
  [[nodiscard]] std::uint32_t chosenFourcc() const;
  [[nodiscard]] int chosenRate() const;
  /// Descriptors and mappings that were not given back.
  [[nodiscard]] int leaks() const;

  std::vector<std::string> paths() override { return {options_.path}; }
  int open(const char* path) override;
  int close(int descriptor) override;
  int control(int descriptor, unsigned long request, void* argument) override;
  void* map(int descriptor, std::size_t size, std::size_t offset) override;
  int unmap(void* memory, std::size_t size) override;
  int waitForFrame(int descriptor) override;

 private:
  int answer(unsigned long request, void* argument);
  int describeFormat(v4l2_fmtdesc& description) const;
  int describeSize(v4l2_frmsizeenum& entry) const;
  int describeInterval(v4l2_frmivalenum& entry) const;
  int setFormat(v4l2_format& description);
  int describeBuffer(v4l2_buffer& buffer) const;
  int dequeue(v4l2_buffer& buffer);

  Options options_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::vector<std::vector<std::uint8_t>> memory_;
  std::deque<std::uint32_t> empty_;  ///< memory that waits to be filled
  std::deque<v4l2_buffer> full_;
  v4l2_pix_format format_{};
  int rate_ = 0;
  int leaks_ = 0;
  bool isGone_ = false;
};

}  // namespace vesk::capture::v4l2::test
