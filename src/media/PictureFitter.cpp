#include "media/PictureFitter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

namespace vesk::media {
namespace {

constexpr std::uint8_t fitterBlack = 16;
constexpr std::uint8_t noColour = 128;

void blacken(I420Picture& picture) {
  for (std::size_t i = 0; i < picture.planes().size(); ++i) {
    const I420Picture::Plane& plane = picture.planes()[i];
    for (int y = 0; y < plane.height; ++y) {
      std::memset(plane.data + plane.stride * y, i == 0 ? fitterBlack : noColour,
                  static_cast<std::size_t>(plane.width));
    }
  }
}

/// Null without memory and for impossible sizes.
ScalerPtr makeScaler(const BgraView& source, PixelRect place) {
  ScalerPtr scaler(sws_alloc_context());
  if (scaler == nullptr) {
    return nullptr;
  }
  constexpr std::int64_t centre = 128;  // of a position in 256 parts of a pixel
  const auto set = [&](const char* name, std::int64_t value) {
    av_opt_set_int(scaler.get(), name, value, 0);
  };
  set("srcw", source.width);
  set("srch", source.height);
  set("src_format", AV_PIX_FMT_BGR0);
  set("dstw", place.width);
  set("dsth", place.height);
  set("dst_format", AV_PIX_FMT_YUV420P);
  set("dst_h_chr_pos", centre);
  set("dst_v_chr_pos", centre);
  set("sws_flags", SWS_BILINEAR | SWS_ACCURATE_RND);
  const int* weights = sws_getCoefficients(SWS_CS_ITU709);
  constexpr int neutral = 1 << 16;
  sws_setColorspaceDetails(scaler.get(), weights, 1, weights, 0, 0, neutral, neutral);
  return sws_init_context(scaler.get(), nullptr, nullptr) < 0 ? nullptr : std::move(scaler);
}

bool hasSizeOf(const I420Picture& picture, const BgraView& view) {
  return picture.width() == view.width && picture.height() == view.height;
}

}  // namespace

PixelRect fittedRect(int pictureWidth, int pictureHeight, int targetWidth,
                     int targetHeight) noexcept {
  const double scale = std::min(static_cast<double>(targetWidth) / pictureWidth,
                                static_cast<double>(targetHeight) / pictureHeight);
  const auto even = [](double length) { return 2 * static_cast<int>(std::lround(length / 2)); };
  const int width = std::clamp(even(pictureWidth * scale), 2, targetWidth);
  const int height = std::clamp(even(pictureHeight * scale), 2, targetHeight);
  return {(targetWidth - width) / 4 * 2, (targetHeight - height) / 4 * 2, width, height};
}

bool PictureFitter::convert(const BgraView& source, I420Picture& target) {
  if (hasSizeOf(target, source)) {
    convertToI420(source, target);
    return true;
  }
  const bool isPossible = source.data != nullptr && source.width > 0 && source.height > 0;
  const PixelRect place =
      isPossible ? fittedRect(source.width, source.height, target.width(), target.height())
                 : PixelRect{};
  if (place.width != target.width() || place.height != target.height()) {
    blacken(target);
  }
  return isPossible && scale(source, place, target);
}

bool PictureFitter::scale(const BgraView& source, PixelRect place, I420Picture& target) {
  if (const Sizes sizes{source.width, source.height, place}; sizes != sizes_) {
    scaler_ = makeScaler(source, place);
    sizes_ = sizes;
  }
  if (scaler_ == nullptr) {
    return false;
  }
  const std::array<const std::uint8_t*, 4> from{source.data};
  const std::array<int, 4> fromStride{static_cast<int>(source.stride)};
  std::array<std::uint8_t*, 4> to{};
  std::array<int, 4> toStride{};
  for (std::size_t i = 0; i < target.planes().size(); ++i) {
    const I420Picture::Plane& plane = target.planes()[i];
    const int step = i == 0 ? 1 : 2;
    to[i] = plane.data + plane.stride * (place.y / step) + place.x / step;
    toStride[i] = static_cast<int>(plane.stride);
  }
  return sws_scale(scaler_.get(), from.data(), fromStride.data(), 0, source.height, to.data(),
                   toStride.data()) == place.height;
}

}  // namespace vesk::media
