#include "capture/v4l2/FakeVideoDevice.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

namespace vesk::capture::v4l2::test {
namespace {

constexpr int descriptorOfTheCamera = 1000;

int failure(int error) {
  errno = error;
  return -1;
}

int outcome(int error) {
  return error == 0 ? 0 : failure(error);
}

}  // namespace

void FakeVideoDevice::take(Frame frame) {
  const std::scoped_lock lock{mutex_};
  if (empty_.empty()) throw std::logic_error("no memory was given to the driver");
  const std::uint32_t index = empty_.front();
  empty_.pop_front();
  std::ranges::copy(frame.bytes, memory_.at(index).begin());
  v4l2_buffer buffer{};
  buffer.index = index;
  buffer.bytesused = static_cast<std::uint32_t>(frame.bytes.size());
  buffer.flags = frame.flags;
  const auto seconds = std::chrono::floor<std::chrono::seconds>(frame.stamp);
  buffer.timestamp.tv_sec = seconds.count();
  buffer.timestamp.tv_usec =
      std::chrono::duration_cast<std::chrono::microseconds>(frame.stamp - seconds).count();
  full_.push_back(buffer);
}

void FakeVideoDevice::unplug() {
  const std::scoped_lock lock{mutex_};
  isGone_ = true;
}

PixelSize FakeVideoDevice::chosenSize() const {
  const std::scoped_lock lock{mutex_};
  return {static_cast<int>(format_.width), static_cast<int>(format_.height)};
}

std::uint32_t FakeVideoDevice::chosenFourcc() const {
  const std::scoped_lock lock{mutex_};
  return format_.pixelformat;
}

int FakeVideoDevice::chosenRate() const {
  const std::scoped_lock lock{mutex_};
  return rate_;
}

int FakeVideoDevice::leaks() const {
  const std::scoped_lock lock{mutex_};
  return leaks_;
}

int FakeVideoDevice::open(const char* path) {
  const std::scoped_lock lock{mutex_};
  if (path != options_.path) return failure(ENOENT);
  if (options_.openError != 0) return failure(options_.openError);
  ++leaks_;
  return descriptorOfTheCamera;
}

int FakeVideoDevice::close(int /*descriptor*/) {
  const std::scoped_lock lock{mutex_};
  --leaks_;
  return 0;
}

void* FakeVideoDevice::map(int /*descriptor*/, std::size_t /*size*/, std::size_t offset) {
  const std::scoped_lock lock{mutex_};
  ++leaks_;
  return memory_.at(offset).data();
}

int FakeVideoDevice::unmap(void* /*memory*/, std::size_t /*size*/) {
  const std::scoped_lock lock{mutex_};
  --leaks_;
  return 0;
}

int FakeVideoDevice::waitForFrame(int /*descriptor*/) {
  {
    const std::scoped_lock lock{mutex_};
    if (isGone_ || !full_.empty()) return 1;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds{2});
  return 0;
}

int FakeVideoDevice::control(int /*descriptor*/, unsigned long request, void* argument) {
  const std::scoped_lock lock{mutex_};
  return isGone_ ? failure(ENODEV) : answer(request, argument);
}

int FakeVideoDevice::answer(unsigned long request, void* argument) {
  switch (request) {
    case VIDIOC_QUERYCAP: {
      auto& capability = *static_cast<v4l2_capability*>(argument);
      std::ranges::copy(options_.card, std::begin(capability.card));
      capability.capabilities = V4L2_CAP_DEVICE_CAPS | V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
      capability.device_caps = options_.abilities;
      return 0;
    }
    case VIDIOC_ENUM_FMT:
      return describeFormat(*static_cast<v4l2_fmtdesc*>(argument));
    case VIDIOC_ENUM_FRAMESIZES:
      return describeSize(*static_cast<v4l2_frmsizeenum*>(argument));
    case VIDIOC_ENUM_FRAMEINTERVALS:
      return describeInterval(*static_cast<v4l2_frmivalenum*>(argument));
    case VIDIOC_S_FMT:
      return setFormat(*static_cast<v4l2_format*>(argument));
    case VIDIOC_S_PARM: {
      const auto& interval = static_cast<v4l2_streamparm*>(argument)->parm.capture.timeperframe;
      rate_ = static_cast<int>(interval.denominator / interval.numerator);
      return 0;
    }
    case VIDIOC_REQBUFS: {
      auto& wanted = *static_cast<v4l2_requestbuffers*>(argument);
      wanted.count = std::min(wanted.count, 3U);
      memory_.assign(wanted.count, std::vector<std::uint8_t>(format_.sizeimage));
      return 0;
    }
    case VIDIOC_QUERYBUF:
      return describeBuffer(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_QBUF:
      empty_.push_back(static_cast<v4l2_buffer*>(argument)->index);
      return 0;
    case VIDIOC_DQBUF:
      return dequeue(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMON:
      return outcome(options_.streamError);
    case VIDIOC_STREAMOFF:
      return 0;
    default:
      return failure(ENOTTY);
  }
}

int FakeVideoDevice::describeFormat(v4l2_fmtdesc& description) const {
  if (description.index >= options_.formats.size()) return failure(EINVAL);
  description.pixelformat = options_.formats[description.index].fourcc;
  return 0;
}

int FakeVideoDevice::describeSize(v4l2_frmsizeenum& entry) const {
  const auto format = std::ranges::find(options_.formats, entry.pixel_format, &Format::fourcc);
  if (format == options_.formats.end() || entry.index >= format->sizes.size()) {
    return failure(EINVAL);
  }
  entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
  entry.discrete.width = static_cast<std::uint32_t>(format->sizes[entry.index].width);
  entry.discrete.height = static_cast<std::uint32_t>(format->sizes[entry.index].height);
  return 0;
}

int FakeVideoDevice::describeInterval(v4l2_frmivalenum& entry) const {
  const auto format = std::ranges::find(options_.formats, entry.pixel_format, &Format::fourcc);
  if (format == options_.formats.end() || entry.index > 0) return failure(EINVAL);
  entry.type = V4L2_FRMIVAL_TYPE_DISCRETE;
  entry.discrete = {.numerator = 1,
                    .denominator = static_cast<std::uint32_t>(format->framesPerSecond)};
  return 0;
}

int FakeVideoDevice::setFormat(v4l2_format& description) {
  if (options_.formatError != 0) return failure(options_.formatError);
  v4l2_pix_format& picture = description.fmt.pix;
  picture.bytesperline =
      picture.width * (picture.pixelformat == V4L2_PIX_FMT_NV12 ? 1 : 2) + options_.padding;
  picture.sizeimage = 2 * picture.bytesperline * picture.height;
  format_ = picture;
  return 0;
}

int FakeVideoDevice::describeBuffer(v4l2_buffer& buffer) const {
  buffer.length = format_.sizeimage;
  buffer.m.offset = buffer.index;
  return 0;
}

int FakeVideoDevice::dequeue(v4l2_buffer& buffer) {
  if (full_.empty()) return failure(EAGAIN);
  buffer = full_.front();
  full_.pop_front();
  return 0;
}

}  // namespace vesk::capture::v4l2::test
