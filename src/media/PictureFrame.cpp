#include "media/PictureFrame.h"

#include <cstring>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/buffer.h>
#include <libavutil/frame.h>
}

namespace vesk::media {
namespace {

void copyRows(const I420Picture::Plane& plane, std::uint8_t* target, int stride) {
  for (int y = 0; y < plane.height; ++y) {
    std::memcpy(target + std::ptrdiff_t{stride} * y, plane.data + plane.stride * y,
                static_cast<std::size_t>(plane.width));
  }
}

void interleaveRows(const I420Picture::Plane& first, const I420Picture::Plane& second,
                    std::uint8_t* target, int stride) {
  for (int y = 0; y < first.height; ++y) {
    const std::uint8_t* left = first.data + first.stride * y;
    const std::uint8_t* right = second.data + second.stride * y;
    std::uint8_t* row = target + std::ptrdiff_t{stride} * y;
    for (int x = 0; x < first.width; ++x) {
      *row++ = left[x];
      *row++ = right[x];
    }
  }
}

}  // namespace

int pointAt(const I420Picture& picture, AVFrame& frame) {
  const auto& planes = picture.planes();
  frame.format = AV_PIX_FMT_YUV420P;
  frame.width = picture.width();
  frame.height = picture.height();
  for (std::size_t i = 0; i < planes.size(); ++i) {
    frame.data[i] = planes[i].data;
    frame.linesize[i] = static_cast<int>(planes[i].stride);
  }
  // A frame without a buffer would be copied on its way to the encoder.
  const auto leaveToPicture = [](void* /*opaque*/, std::uint8_t* /*data*/) {};
  frame.buf[0] = av_buffer_create(planes[0].data, picture.byteCount(), leaveToPicture, nullptr,
                                  AV_BUFFER_FLAG_READONLY);
  return frame.buf[0] == nullptr ? AVERROR(ENOMEM) : 0;
}

FramePtr nv12Frame(const I420Picture& picture) {
  FramePtr frame(av_frame_alloc());
  if (frame == nullptr) {
    return nullptr;
  }
  frame->format = AV_PIX_FMT_NV12;
  frame->width = picture.width();
  frame->height = picture.height();
  if (av_frame_get_buffer(frame.get(), 0) < 0) {
    return nullptr;
  }
  const auto& [luma, cb, cr] = picture.planes();
  copyRows(luma, frame->data[0], frame->linesize[0]);
  interleaveRows(cb, cr, frame->data[1], frame->linesize[1]);
  return frame;
}

void describeColours(AVCodecContext& encoder) {
  encoder.colorspace = AVCOL_SPC_BT709;
  encoder.color_primaries = AVCOL_PRI_BT709;
  encoder.color_trc = AVCOL_TRC_BT709;
  encoder.color_range = AVCOL_RANGE_MPEG;
  encoder.chroma_sample_location = AVCHROMA_LOC_CENTER;
}

}  // namespace vesk::media
