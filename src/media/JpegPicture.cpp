#include "media/JpegPicture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "media/FrameImport.h"
#include "media/LibavHandles.h"
#include "media/RgbConversion.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace vesk::media {
namespace {

constexpr std::int64_t mostPixels = std::int64_t{1} << 24;

PacketPtr packetOf(std::string_view bytes) {
  PacketPtr packet(av_packet_alloc());
  if (packet == nullptr || av_new_packet(packet.get(), static_cast<int>(bytes.size())) < 0) {
    return nullptr;
  }
  std::memcpy(packet->data, bytes.data(), bytes.size());
  return packet;
}

CodecPtr openDecoder() {
  const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
  CodecPtr decoder(avcodec_alloc_context3(codec));
  if (codec == nullptr || decoder == nullptr) {
    return nullptr;
  }
  decoder->max_pixels = mostPixels;
  decoder->err_recognition = AV_EF_EXPLODE;
  decoder->thread_count = 1;
  return avcodec_open2(decoder.get(), codec, nullptr) < 0 ? nullptr : std::move(decoder);
}

FramePtr decodedFrame(std::string_view file) {
  const PacketPtr packet = packetOf(file);
  const CodecPtr decoder = openDecoder();
  FramePtr frame(av_frame_alloc());
  if (packet == nullptr || decoder == nullptr || frame == nullptr ||
      avcodec_send_packet(decoder.get(), packet.get()) < 0 ||
      avcodec_receive_frame(decoder.get(), frame.get()) < 0) {
    return nullptr;
  }
  const bool isDamaged =
      frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
  return isDamaged ? nullptr : std::move(frame);
}

/// A decoder makes up what a cut file lacks; this is how to tell one.
bool isWholeJpeg(std::string_view file) {
  return file.starts_with("\xFF\xD8\xFF") && file.ends_with("\xFF\xD9");
}

/// The quantiser's step for a quality: eighths of the standard matrix, of which there are 2…31.
double quantiserStep(double quality) {
  const double scale = quality < 0.5 ? 0.5 / quality : 2 - 2 * quality;
  return std::clamp(8 * scale, 2.0, 31.0);
}

CodecPtr openEncoder(const package::Picture& picture, double quality) {
  const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
  CodecPtr encoder(avcodec_alloc_context3(codec));
  if (codec == nullptr || encoder == nullptr) {
    return nullptr;
  }
  encoder->width = picture.width;
  encoder->height = picture.height;
  encoder->pix_fmt = AV_PIX_FMT_YUVJ420P;
  encoder->color_range = AVCOL_RANGE_JPEG;
  encoder->time_base = {1, 25};
  encoder->sample_aspect_ratio = {1, 1};  // without one, no JFIF header is written
  encoder->flags |= AV_CODEC_FLAG_QSCALE | AV_CODEC_FLAG_BITEXACT;
  encoder->global_quality = static_cast<int>(std::lround(quantiserStep(quality) * FF_QP2LAMBDA));
  encoder->thread_count = 1;
  return avcodec_open2(encoder.get(), codec, nullptr) < 0 ? nullptr : std::move(encoder);
}

}  // namespace

std::optional<package::Picture> decodeJpeg(std::string_view file) {
  if (!isWholeJpeg(file)) {
    return std::nullopt;
  }
  silenceLibav();
  const FramePtr frame = decodedFrame(file);
  if (frame == nullptr) {
    return std::nullopt;
  }
  frame->colorspace = AVCOL_SPC_BT470BG;
  frame->color_range = AVCOL_RANGE_JPEG;
  frame->chroma_location = AVCHROMA_LOC_CENTER;
  const auto imported = FrameImport(frame->width, frame->height).import(*frame, 0);
  if (!imported) {
    return std::nullopt;
  }
  auto picture = rgbPicture(*imported, imported->width, imported->height);
  return picture ? std::optional(std::move(*picture)) : std::nullopt;
}

std::optional<std::string> encodeJpeg(const package::Picture& picture, double quality) {
  silenceLibav();
  auto frame = jfifFrame(picture);
  const CodecPtr encoder = openEncoder(picture, quality);
  const PacketPtr packet(av_packet_alloc());
  if (!frame || encoder == nullptr || packet == nullptr) {
    return std::nullopt;
  }
  (*frame)->quality = encoder->global_quality;
  if (avcodec_send_frame(encoder.get(), frame->get()) < 0 ||
      avcodec_receive_packet(encoder.get(), packet.get()) < 0) {
    return std::nullopt;
  }
  return std::string(reinterpret_cast<const char*>(packet->data),
                     static_cast<std::size_t>(packet->size));
}

}  // namespace vesk::media
