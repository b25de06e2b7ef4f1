#include "media/FrameImport.h"

#include <optional>
#include <utility>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace vesk::media {
namespace {

std::optional<PixelLayout> layoutOf(int pixelFormat) {
  switch (pixelFormat) {
    case AV_PIX_FMT_YUV420P:
    case AV_PIX_FMT_YUVJ420P:
      return PixelLayout::yuv420p8;
    case AV_PIX_FMT_YUV422P:
    case AV_PIX_FMT_YUVJ422P:
      return PixelLayout::yuv422p8;
    case AV_PIX_FMT_YUV444P:
    case AV_PIX_FMT_YUVJ444P:
      return PixelLayout::yuv444p8;
    case AV_PIX_FMT_YUV420P10:
      return PixelLayout::yuv420p10;
    case AV_PIX_FMT_YUV422P10:
      return PixelLayout::yuv422p10;
    case AV_PIX_FMT_YUV444P10:
      return PixelLayout::yuv444p10;
    default:
      return std::nullopt;
  }
}

bool isRgb(const AVFrame& frame) {
  const auto* descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  return descriptor != nullptr &&
         (descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

bool isFullRange(const AVFrame& frame) {
  switch (frame.format) {
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ444P:
      return true;
    default:
      return frame.color_range == AVCOL_RANGE_JPEG || isRgb(frame);
  }
}

ColorMatrix matrixOf(const AVFrame& frame) {
  switch (frame.colorspace) {
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
      return ColorMatrix::bt601;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return ColorMatrix::bt2020;
    default:
      return ColorMatrix::bt709;
  }
}

ChromaSiting sitingOf(const AVFrame& frame) {
  switch (frame.chroma_location) {
    case AVCHROMA_LOC_CENTER:
      return ChromaSiting::centre;
    case AVCHROMA_LOC_TOPLEFT:
      return ChromaSiting::topLeft;
    default:
      return ChromaSiting::left;
  }
}

VideoPlane planeOf(const AVFrame& frame, int index) {
  const auto* descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
  const int shiftX = index == 0 ? 0 : descriptor->log2_chroma_w;
  const int shiftY = index == 0 ? 0 : descriptor->log2_chroma_h;
  return {.data = reinterpret_cast<const std::byte*>(frame.data[index]),
          .stride = frame.linesize[index],
          .width = AV_CEIL_RSHIFT(frame.width, shiftX),
          .height = AV_CEIL_RSHIFT(frame.height, shiftY)};
}

VideoFrame pictureOf(FramePtr owned, PixelLayout layout, double pts) {
  const std::shared_ptr<AVFrame> frame(std::move(owned));
  return {.width = frame->width,
          .height = frame->height,
          .layout = layout,
          .planes = {planeOf(*frame, 0), planeOf(*frame, 1), planeOf(*frame, 2)},
          .matrix = matrixOf(*frame),
          .range = isFullRange(*frame) ? ColorRange::full : ColorRange::limited,
          .siting = sitingOf(*frame),
          .pts = pts,
          .storage = frame};
}

bool hasRowsInOrder(const AVFrame& frame) {
  return frame.linesize[0] > 0 && frame.linesize[1] > 0 && frame.linesize[2] > 0;
}

}  // namespace

std::expected<VideoFrame, int> FrameImport::import(const AVFrame& frame, double pts) {
  const auto layout = layoutOf(frame.format);
  if (layout && frame.width == width_ && frame.height == height_ && hasRowsInOrder(frame)) {
    FramePtr reference(av_frame_clone(&frame));
    if (reference == nullptr) {
      return std::unexpected(AVERROR(ENOMEM));
    }
    return pictureOf(std::move(reference), *layout, pts);
  }
  auto copy = converted(frame);
  if (!copy) {
    return std::unexpected(copy.error());
  }
  return pictureOf(std::move(*copy), PixelLayout::yuv420p8, pts);
}

std::expected<FramePtr, int> FrameImport::converted(const AVFrame& frame) {
  scaler_.reset(sws_getCachedContext(scaler_.release(), frame.width, frame.height,
                                     static_cast<AVPixelFormat>(frame.format), width_, height_,
                                     AV_PIX_FMT_YUV420P, SWS_BICUBIC | SWS_ACCURATE_RND, nullptr,
                                     nullptr, nullptr));
  FramePtr target(av_frame_alloc());
  if (scaler_ == nullptr || target == nullptr) {
    return std::unexpected(scaler_ == nullptr ? AVERROR(EINVAL) : AVERROR(ENOMEM));
  }
  const bool fromRgb = isRgb(frame);
  const bool toFullRange = isFullRange(frame) && !fromRgb;
  const int* weights = sws_getCoefficients(SWS_CS_ITU709);
  constexpr int unity = 1 << 16;
  sws_setColorspaceDetails(scaler_.get(), weights, isFullRange(frame) ? 1 : 0, weights,
                           toFullRange ? 1 : 0, 0, unity, unity);

  target->format = AV_PIX_FMT_YUV420P;
  target->width = width_;
  target->height = height_;
  if (const int status = av_frame_get_buffer(target.get(), 0); status < 0) {
    return std::unexpected(status);
  }
  const int rows = sws_scale(scaler_.get(), frame.data, frame.linesize, 0, frame.height,
                             target->data, target->linesize);
  if (rows < 0) {
    return std::unexpected(rows);
  }
  target->colorspace = fromRgb ? AVCOL_SPC_BT709 : frame.colorspace;
  target->color_range = toFullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  target->chroma_location = frame.chroma_location;
  return target;
}

}  // namespace vesk::media
