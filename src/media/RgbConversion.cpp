#include "media/RgbConversion.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

namespace vesk::media {
namespace {

/// One side of a conversion.
struct Form {
  int width = 0;
  int height = 0;
  AVPixelFormat format = AV_PIX_FMT_NONE;
  ColorMatrix matrix = ColorMatrix::bt601;
  ColorRange range = ColorRange::full;
  ChromaSiting siting = ChromaSiting::centre;
};

AVPixelFormat formatOf(PixelLayout layout) {
  switch (layout) {
    case PixelLayout::yuv420p8:
      return AV_PIX_FMT_YUV420P;
    case PixelLayout::yuv422p8:
      return AV_PIX_FMT_YUV422P;
    case PixelLayout::yuv444p8:
      return AV_PIX_FMT_YUV444P;
    case PixelLayout::yuv420p10:
      return AV_PIX_FMT_YUV420P10;
    case PixelLayout::yuv422p10:
      return AV_PIX_FMT_YUV422P10;
    case PixelLayout::yuv444p10:
      return AV_PIX_FMT_YUV444P10;
  }
  std::unreachable();
}

const int* weightsOf(ColorMatrix matrix) {
  switch (matrix) {
    case ColorMatrix::bt601:
      return sws_getCoefficients(SWS_CS_ITU601);
    case ColorMatrix::bt709:
      return sws_getCoefficients(SWS_CS_ITU709);
    case ColorMatrix::bt2020:
      return sws_getCoefficients(SWS_CS_BT2020);
  }
  std::unreachable();
}

/// Places are in 1/256 of a luma sample.
void setSiting(SwsContext& scaler, const char* across, const char* down, const Form& form) {
  const bool is420 = form.format == AV_PIX_FMT_YUV420P || form.format == AV_PIX_FMT_YUV420P10;
  if (!is420) {
    return;
  }
  constexpr int between = 128;
  const bool isCentred = form.siting == ChromaSiting::centre;
  const bool isOnTop = form.siting == ChromaSiting::topLeft;
  av_opt_set_int(&scaler, across, isCentred ? between : 0, 0);
  av_opt_set_int(&scaler, down, isOnTop ? 0 : between, 0);
}

/// As libswscale says it.
int isFull(const Form& form) {
  return form.range == ColorRange::full ? 1 : 0;
}

ScalerPtr makeScaler(const Form& from, const Form& to) {
  ScalerPtr scaler(sws_alloc_context());
  if (scaler == nullptr) {
    return nullptr;
  }
  const auto set = [&](const char* name, int value) {
    av_opt_set_int(scaler.get(), name, value, 0);
  };
  set("srcw", from.width);
  set("srch", from.height);
  set("src_format", from.format);
  set("dstw", to.width);
  set("dsth", to.height);
  set("dst_format", to.format);
  set("sws_flags", SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP);
  setSiting(*scaler, "src_h_chr_pos", "src_v_chr_pos", from);
  setSiting(*scaler, "dst_h_chr_pos", "dst_v_chr_pos", to);
  constexpr int unity = 1 << 16;
  sws_setColorspaceDetails(scaler.get(), weightsOf(from.matrix), isFull(from), weightsOf(to.matrix),
                           isFull(to), 0, unity, unity);
  return sws_init_context(scaler.get(), nullptr, nullptr) < 0 ? nullptr : std::move(scaler);
}

const std::uint8_t* bytesOf(const VideoPlane& plane) {
  return reinterpret_cast<const std::uint8_t*>(plane.data);
}

int strideOf(const VideoPlane& plane) {
  return static_cast<int>(plane.stride);
}

}  // namespace

std::expected<package::Picture, int> rgbPicture(const VideoFrame& frame, int width, int height) {
  const Form from{.width = frame.width,
                  .height = frame.height,
                  .format = formatOf(frame.layout),
                  .matrix = frame.matrix,
                  .range = frame.range,
                  .siting = frame.siting};
  const auto scaler =
      makeScaler(from, {.width = width, .height = height, .format = AV_PIX_FMT_RGB24});
  if (scaler == nullptr) {
    return std::unexpected(AVERROR(EINVAL));
  }
  const auto& [luma, cb, cr] = frame.planes;
  const std::array source{bytesOf(luma), bytesOf(cb), bytesOf(cr)};
  const std::array strides{strideOf(luma), strideOf(cb), strideOf(cr)};
  package::Picture picture{.width = width, .height = height, .pixels = {}};
  constexpr std::size_t bytesPerPixel = 3;
  const int rowBytes = 3 * width;
  picture.pixels.resize(bytesPerPixel * static_cast<std::size_t>(width) *
                        static_cast<std::size_t>(height));
  std::uint8_t* target = picture.pixels.data();
  const int rows =
      sws_scale(scaler.get(), source.data(), strides.data(), 0, frame.height, &target, &rowBytes);
  if (rows < 0) {
    return std::unexpected(rows);
  }
  return picture;
}

std::expected<FramePtr, int> jfifFrame(const package::Picture& picture) {
  const Form from{.width = picture.width, .height = picture.height, .format = AV_PIX_FMT_RGB24};
  Form to = from;
  to.format = AV_PIX_FMT_YUV420P;
  const auto scaler = makeScaler(from, to);
  FramePtr frame(av_frame_alloc());
  if (scaler == nullptr || frame == nullptr) {
    return std::unexpected(scaler == nullptr ? AVERROR(EINVAL) : AVERROR(ENOMEM));
  }
  frame->format = AV_PIX_FMT_YUVJ420P;
  frame->width = picture.width;
  frame->height = picture.height;
  frame->color_range = AVCOL_RANGE_JPEG;
  frame->colorspace = AVCOL_SPC_BT470BG;
  if (const int status = av_frame_get_buffer(frame.get(), 0); status < 0) {
    return std::unexpected(status);
  }
  const std::uint8_t* source = picture.pixels.data();
  const int rowBytes = 3 * picture.width;
  const int rows =
      sws_scale(scaler.get(), &source, &rowBytes, 0, picture.height, frame->data, frame->linesize);
  if (rows < 0) {
    return std::unexpected(rows);
  }
  return frame;
}

}  // namespace vesk::media
