#include "capture/v4l2/VideoDevice.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace vesk::capture::v4l2 {
namespace {

using camera::CameraFormat;
using camera::PixelLayout;

constexpr std::uint32_t capture = V4L2_BUF_TYPE_VIDEO_CAPTURE;
constexpr std::uint32_t buffersWanted = 4;

struct KnownFormat {
  std::uint32_t fourcc;
  PixelLayout layout;
};

constexpr std::array knownFormats{
    KnownFormat{V4L2_PIX_FMT_YUYV, PixelLayout::yuy2},
    KnownFormat{V4L2_PIX_FMT_NV12, PixelLayout::nv12},
    KnownFormat{V4L2_PIX_FMT_MJPEG, PixelLayout::mjpeg},
};

CameraRefusal refusalFor(int error) {
  if (error == EBUSY) {
    return {.cause = CameraRefusal::Cause::busy, .message = "摄像头正被其他程序使用"};
  }
  if (error == EACCES || error == EPERM) {
    return {.cause = CameraRefusal::Cause::other, .message = "没有使用摄像头的权限"};
  }
  if (error == ENOENT || error == ENODEV || error == ENXIO) {
    return {.cause = CameraRefusal::Cause::other, .message = "找不到这个摄像头"};
  }
  return {.cause = CameraRefusal::Cause::other, .message = "摄像头无法启动"};
}

PixelSize pixelSize(std::uint32_t width, std::uint32_t height) {
  return {static_cast<int>(width), static_cast<int>(height)};
}

camera::SizeRange rangeOf(const v4l2_frmsize_stepwise& range) {
  return {.least = pixelSize(range.min_width, range.min_height),
          .most = pixelSize(range.max_width, range.max_height),
          .step = pixelSize(range.step_width, range.step_height)};
}

std::optional<media::HostTime> stampOf(const v4l2_buffer& buffer) {
  if ((buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) != V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC) {
    return std::nullopt;
  }
  return std::chrono::seconds{buffer.timestamp.tv_sec} +
         std::chrono::microseconds{buffer.timestamp.tv_usec};
}

v4l2_buffer emptyBuffer(std::uint32_t index = 0) {
  v4l2_buffer buffer{};
  buffer.type = capture;
  buffer.memory = V4L2_MEMORY_MMAP;
  buffer.index = index;
  return buffer;
}

}  // namespace

std::expected<VideoDevice, CameraRefusal> VideoDevice::open(const std::string& path,
                                                            VideoDeviceCalls& calls) {
  const int descriptor = calls.open(path.c_str());
  if (descriptor < 0) return std::unexpected(refusalFor(errno));
  return VideoDevice{descriptor, calls};
}

VideoDevice::VideoDevice(int descriptor, VideoDeviceCalls& calls)
    : descriptor_{descriptor}, calls_{&calls} {}

VideoDevice::VideoDevice(VideoDevice&& other) noexcept
    : descriptor_{std::exchange(other.descriptor_, -1)},
      calls_{other.calls_},
      memory_{std::move(other.memory_)} {}

VideoDevice::~VideoDevice() {
  if (descriptor_ < 0) return;
  int type = capture;
  if (!memory_.empty()) control(VIDIOC_STREAMOFF, &type);
  for (const Memory& memory : memory_) calls_->unmap(memory.data, memory.size);
  calls_->close(descriptor_);
}

bool VideoDevice::control(unsigned long request, void* argument) {
  return calls_->control(descriptor_, request, argument) >= 0;
}

std::optional<std::string> VideoDevice::cameraName() {
  v4l2_capability capability{};
  if (!control(VIDIOC_QUERYCAP, &capability)) return std::nullopt;
  const std::uint32_t abilities = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0
                                      ? capability.device_caps
                                      : capability.capabilities;
  constexpr std::uint32_t needed = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
  if ((abilities & needed) != needed || formats({}).empty()) return std::nullopt;
  const auto* const begin = std::begin(capability.card);
  return std::string{begin, std::ranges::find(begin, std::end(capability.card), 0)};
}

std::vector<CameraFormat> VideoDevice::formats(PixelSize wanted) {
  std::vector<CameraFormat> formats;
  v4l2_fmtdesc description{};
  description.type = capture;
  for (; control(VIDIOC_ENUM_FMT, &description); ++description.index) {
    const auto* const known =
        std::ranges::find(knownFormats, description.pixelformat, &KnownFormat::fourcc);
    if (known == knownFormats.end()) continue;
    for (const PixelSize& size : sizes(known->fourcc, wanted)) {
      formats.push_back({.layout = known->layout,
                         .size = size,
                         .framesPerSecond = highestRate(known->fourcc, size)});
    }
  }
  return formats;
}

std::vector<PixelSize> VideoDevice::sizes(std::uint32_t fourcc, PixelSize wanted) {
  std::vector<PixelSize> sizes;
  v4l2_frmsizeenum entry{};
  entry.pixel_format = fourcc;
  for (; control(VIDIOC_ENUM_FRAMESIZES, &entry); ++entry.index) {
    if (entry.type != V4L2_FRMSIZE_TYPE_DISCRETE) {
      return {camera::closestSize(rangeOf(entry.stepwise), wanted)};
    }
    sizes.push_back(pixelSize(entry.discrete.width, entry.discrete.height));
  }
  return sizes;
}

/// 0 when the device does not tell.
double VideoDevice::highestRate(std::uint32_t fourcc, PixelSize size) {
  double highest = 0;
  v4l2_frmivalenum entry{};
  entry.pixel_format = fourcc;
  entry.width = static_cast<std::uint32_t>(size.width);
  entry.height = static_cast<std::uint32_t>(size.height);
  for (; control(VIDIOC_ENUM_FRAMEINTERVALS, &entry); ++entry.index) {
    const bool isDiscrete = entry.type == V4L2_FRMIVAL_TYPE_DISCRETE;
    const v4l2_fract shortest = isDiscrete ? entry.discrete : entry.stepwise.min;
    if (shortest.numerator != 0) {
      highest = std::max(highest, static_cast<double>(shortest.denominator) / shortest.numerator);
    }
    if (!isDiscrete) break;
  }
  return highest;
}

std::expected<VideoDevice::Stream, CameraRefusal> VideoDevice::start(const CameraFormat& format) {
  auto stream = setFormat(format);
  if (!stream) return stream;
  setRate(camera::frameRateOf(format));
  int type = capture;
  if (!mapMemory() || !control(VIDIOC_STREAMON, &type)) return std::unexpected(refusalFor(errno));
  return stream;
}

/// The device may choose something else than what it is asked for.
std::expected<VideoDevice::Stream, CameraRefusal> VideoDevice::setFormat(
    const CameraFormat& format) {
  const auto* const wanted = std::ranges::find(knownFormats, format.layout, &KnownFormat::layout);
  v4l2_format description{};
  description.type = capture;
  v4l2_pix_format& picture = description.fmt.pix;
  picture.width = static_cast<std::uint32_t>(format.size.width);
  picture.height = static_cast<std::uint32_t>(format.size.height);
  picture.pixelformat = wanted->fourcc;
  picture.field = V4L2_FIELD_NONE;
  if (!control(VIDIOC_S_FMT, &description)) return std::unexpected(refusalFor(errno));
  const auto* const chosen =
      std::ranges::find(knownFormats, picture.pixelformat, &KnownFormat::fourcc);
  if (chosen == knownFormats.end()) return std::unexpected(refusalFor(EINVAL));
  const bool isCompressed = chosen->layout == PixelLayout::mjpeg;
  return Stream{.format = {.layout = chosen->layout,
                           .size = pixelSize(picture.width, picture.height),
                           .framesPerSecond = format.framesPerSecond},
                .stride = isCompressed ? 0 : static_cast<std::ptrdiff_t>(picture.bytesperline)};
}

/// A device that has no choice of rates refuses, which does no harm.
void VideoDevice::setRate(int framesPerSecond) {
  v4l2_streamparm parameters{};
  parameters.type = capture;
  parameters.parm.capture.timeperframe = {
      .numerator = 1, .denominator = static_cast<std::uint32_t>(framesPerSecond)};
  control(VIDIOC_S_PARM, &parameters);
}

bool VideoDevice::mapMemory() {
  v4l2_requestbuffers request{};
  request.count = buffersWanted;
  request.type = capture;
  request.memory = V4L2_MEMORY_MMAP;
  if (!control(VIDIOC_REQBUFS, &request)) return false;
  for (std::uint32_t index = 0; index < request.count; ++index) {
    v4l2_buffer buffer = emptyBuffer(index);
    if (!control(VIDIOC_QUERYBUF, &buffer)) return false;
    void* const data = calls_->map(descriptor_, buffer.length, buffer.m.offset);
    if (data == nullptr) return false;
    memory_.push_back({data, buffer.length});
    if (!control(VIDIOC_QBUF, &buffer)) return false;
  }
  return !memory_.empty();
}

VideoDevice::Outcome VideoDevice::next(const std::function<void(const Frame&)>& onFrame) {
  const int ready = calls_->waitForFrame(descriptor_);
  if (ready <= 0) return ready == 0 ? Outcome::nothingYet : Outcome::gone;
  std::optional<v4l2_buffer> latest;
  for (v4l2_buffer buffer = emptyBuffer(); control(VIDIOC_DQBUF, &buffer); buffer = emptyBuffer()) {
    if (buffer.index >= memory_.size()) return Outcome::gone;
    if (latest) control(VIDIOC_QBUF, &*latest);
    latest = buffer;
  }
  const int error = errno;
  if (!latest) return error == EAGAIN ? Outcome::nothingYet : Outcome::gone;
  const Memory& memory = memory_[latest->index];
  const std::size_t size = std::min<std::size_t>(latest->bytesused, memory.size);
  onFrame({.bytes = {static_cast<const std::uint8_t*>(memory.data), size},
           .taken = stampOf(*latest),
           .isDamaged = (latest->flags & V4L2_BUF_FLAG_ERROR) != 0});
  return control(VIDIOC_QBUF, &*latest) ? Outcome::frame : Outcome::gone;
}

}  // namespace vesk::capture::v4l2
