#include "media/CaptureEncoder.h"

#include <algorithm>
#include <array>

namespace vesk::media {
namespace {

using Place = CaptureEncoder::Place;

// Without delay: each picture comes out before the next goes in. Otherwise the latest pictures
// before a screen stands still would stay in the encoder until it moves again. It costs x265 a
// tenth of its speed, and x264 nothing.
constexpr const char* immediate = "zerolatency";

// Milliseconds of processor time for a picture of scrolling text at 1080p: x265 25 to 35, x264
// superfast 7 to 13, ultrafast 5 to 6.
constexpr std::array encoders{
    CaptureEncoder{.name = "hevc_vaapi",
                   .codec = PictureCodec::hevc,
                   .place = Place::vaapi,
                   .encoder = "hevc_vaapi"},
    CaptureEncoder{.name = "hevc_nvenc",
                   .codec = PictureCodec::hevc,
                   .place = Place::nvenc,
                   .encoder = "hevc_nvenc",
                   .preset = "p3",
                   .tune = "ull"},
    CaptureEncoder{.name = "hevc_qsv",
                   .codec = PictureCodec::hevc,
                   .place = Place::qsv,
                   .encoder = "hevc_qsv"},
    CaptureEncoder{.name = "libx265",
                   .codec = PictureCodec::hevc,
                   .encoder = "libx265",
                   .preset = "ultrafast",
                   .tune = immediate,
                   .parameters = "log-level=none:open-gop=0:bframes=0"},
    CaptureEncoder{.name = "h264_vaapi",
                   .codec = PictureCodec::h264,
                   .place = Place::vaapi,
                   .encoder = "h264_vaapi"},
    CaptureEncoder{.name = "h264_nvenc",
                   .codec = PictureCodec::h264,
                   .place = Place::nvenc,
                   .encoder = "h264_nvenc",
                   .preset = "p3",
                   .tune = "ull"},
    CaptureEncoder{.name = "h264_qsv",
                   .codec = PictureCodec::h264,
                   .place = Place::qsv,
                   .encoder = "h264_qsv"},
    CaptureEncoder{.name = "libx264-superfast",
                   .codec = PictureCodec::h264,
                   .encoder = "libx264",
                   .preset = "superfast",
                   .tune = immediate,
                   .parameters = "8x8dct=1:scenecut=0"},
    CaptureEncoder{.name = "libx264-ultrafast",
                   .codec = PictureCodec::h264,
                   .encoder = "libx264",
                   .preset = "ultrafast",
                   .tune = immediate,
                   .parameters = "8x8dct=1"},
};

}  // namespace

std::span<const CaptureEncoder> captureEncoders() {
  return encoders;
}

std::optional<CaptureEncoder> captureEncoderNamed(std::string_view name) {
  const auto* found = std::ranges::find(encoders, name, &CaptureEncoder::name);
  return found == encoders.end() ? std::nullopt : std::optional(*found);
}

const CaptureEncoder& plainestCaptureEncoder() {
  return encoders.back();
}

}  // namespace vesk::media
