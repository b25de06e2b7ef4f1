#include "media/TestMovie.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "media/LibavHandles.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace vesk::media {
namespace {

void require(bool holds, const char* what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

AVColorSpace libavMatrix(ColorMatrix matrix) {
  switch (matrix) {
    case ColorMatrix::bt601:
      return AVCOL_SPC_SMPTE170M;
    case ColorMatrix::bt709:
      return AVCOL_SPC_BT709;
    case ColorMatrix::bt2020:
      return AVCOL_SPC_BT2020_NCL;
  }
  return AVCOL_SPC_UNSPECIFIED;
}

CodecPtr openRecipeEncoder(const MovieRecipe& recipe, int shrink, bool globalHeader) {
  const AVCodec* codec = avcodec_find_encoder_by_name(recipe.encoder.c_str());
  require(codec != nullptr, "no such encoder");
  CodecPtr encoder(avcodec_alloc_context3(codec));
  encoder->width = recipe.width / shrink;
  encoder->height = recipe.height / shrink;
  encoder->pix_fmt = av_get_pix_fmt(recipe.pixelFormat.c_str());
  encoder->time_base = {1, recipe.ticksPerSecond};
  encoder->framerate = {25, 1};
  encoder->bit_rate = 400'000;
  encoder->gop_size = recipe.keyFrameInterval;
  encoder->max_b_frames = recipe.bFrames;
  encoder->thread_count = 1;
  if (recipe.matrix) {
    encoder->colorspace = libavMatrix(*recipe.matrix);
  }
  if (recipe.range) {
    encoder->color_range = *recipe.range == ColorRange::full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  }
  if (globalHeader) {
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  }
  av_opt_set(encoder->priv_data, "preset", "veryfast", 0);
  av_opt_set(encoder->priv_data, "x265-params", "log-level=none:pools=none", 0);
  av_opt_set(encoder->priv_data, "x264-params", "scenecut=0:b-adapt=0", 0);
  if (!recipe.profile.empty()) {
    av_opt_set(encoder->priv_data, "profile", recipe.profile.c_str(), 0);
  }
  require(avcodec_open2(encoder.get(), codec, nullptr) >= 0, "the encoder does not open");
  return encoder;
}

void fillPlane(AVFrame& frame, int plane, int value, int rows, int columns, bool wide) {
  for (int y = 0; y < rows; ++y) {
    std::uint8_t* row = frame.data[plane] + std::ptrdiff_t{y} * frame.linesize[plane];
    for (int x = 0; x < columns; ++x) {
      if (wide) {
        reinterpret_cast<std::uint16_t*>(row)[x] = static_cast<std::uint16_t>(value * 4);
      } else {
        row[x] = static_cast<std::uint8_t>(value);
      }
    }
  }
}

FramePtr flatFrame(const AVCodecContext& encoder, int index, std::int64_t tick) {
  FramePtr frame(av_frame_alloc());
  frame->format = encoder.pix_fmt;
  frame->width = encoder.width;
  frame->height = encoder.height;
  frame->colorspace = encoder.colorspace;
  frame->color_range = encoder.color_range;
  require(av_frame_get_buffer(frame.get(), 0) >= 0, "no memory for a frame");
  const auto* format = av_pix_fmt_desc_get(encoder.pix_fmt);
  const bool wide = format->comp[0].depth > 8;
  fillPlane(*frame, 0, shadeOf(index), frame->height, frame->width, wide);
  const int samplesPerColumn = format->comp[1].step / (wide ? 2 : 1);
  for (int plane = 1; plane < 3 && frame->data[plane] != nullptr; ++plane) {
    fillPlane(*frame, plane, 128, AV_CEIL_RSHIFT(frame->height, format->log2_chroma_h),
              AV_CEIL_RSHIFT(frame->width, format->log2_chroma_w) * samplesPerColumn, wide);
  }
  frame->pts = tick;
  return frame;
}

class RecipeMuxer {
 public:
  RecipeMuxer(const std::filesystem::path& file, const MovieRecipe& recipe)
      : recipe_(recipe),
        output_(allocateOutput(file)),
        encoder_(openRecipeEncoder(recipe, 1, true)),
        video_(addStream(*encoder_)) {
    if (recipe.withSound) {
      openSound();
    }
    require(avio_open(&output_->pb, file.c_str(), AVIO_FLAG_WRITE) >= 0, "the file does not open");
    AVDictionary* options = nullptr;
    if (!recipe.movFlags.empty()) {
      av_dict_set(&options, "movflags", recipe.movFlags.c_str(), 0);
    }
    require(avformat_write_header(output_.get(), &options) >= 0, "no header");
    av_dict_free(&options);
  }

  void writeAll() {
    for (std::size_t i = 0; i < recipe_.ticks.size(); ++i) {
      const int index = static_cast<int>(i);
      if (index == recipe_.smallerFrom) {
        encode(*encoder_, *video_, nullptr);
        encoder_ = openRecipeEncoder(recipe_, 2, false);
      }
      encode(*encoder_, *video_, flatFrame(*encoder_, index, recipe_.ticks[i]).get());
      if (sound_ != nullptr) {
        encodeSilence();
      }
    }
    encode(*encoder_, *video_, nullptr);
    if (sound_ != nullptr) {
      encode(*soundEncoder_, *sound_, nullptr);
    }
    require(av_write_trailer(output_.get()) >= 0, "no trailer");
  }

 private:
  static OutputPtr allocateOutput(const std::filesystem::path& file) {
    AVFormatContext* context = nullptr;
    avformat_alloc_output_context2(&context, nullptr, "mov", file.c_str());
    require(context != nullptr, "no output");
    return OutputPtr(context);
  }

  AVStream* addStream(const AVCodecContext& encoder) {
    AVStream* stream = avformat_new_stream(output_.get(), nullptr);
    stream->time_base = encoder.time_base;
    require(avcodec_parameters_from_context(stream->codecpar, &encoder) >= 0, "no parameters");
    return stream;
  }

  void openSound() {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PCM_S16LE);
    soundEncoder_.reset(avcodec_alloc_context3(codec));
    soundEncoder_->sample_fmt = AV_SAMPLE_FMT_S16;
    soundEncoder_->sample_rate = 8000;
    soundEncoder_->time_base = {1, 8000};
    av_channel_layout_default(&soundEncoder_->ch_layout, 1);
    require(avcodec_open2(soundEncoder_.get(), codec, nullptr) >= 0, "no sound encoder");
    sound_ = addStream(*soundEncoder_);
  }

  void encodeSilence() {
    FramePtr frame(av_frame_alloc());
    frame->format = AV_SAMPLE_FMT_S16;
    frame->nb_samples = 400;
    frame->sample_rate = 8000;
    av_channel_layout_default(&frame->ch_layout, 1);
    require(av_frame_get_buffer(frame.get(), 0) >= 0, "no memory for sound");
    std::memset(frame->data[0], 0, 800);
    frame->pts = soundTime_;
    soundTime_ += frame->nb_samples;
    encode(*soundEncoder_, *sound_, frame.get());
  }

  void encode(AVCodecContext& encoder, const AVStream& stream, const AVFrame* frame) {
    require(avcodec_send_frame(&encoder, frame) >= 0, "a frame is refused");
    const PacketPtr packet(av_packet_alloc());
    while (avcodec_receive_packet(&encoder, packet.get()) >= 0) {
      if (&stream == video_ && recipe_.damage) {
        recipe_.damage(packetIndex_++, {packet->data, static_cast<std::size_t>(packet->size)});
      }
      if (&stream == video_) {
        packet->duration = lastDuration();
      }
      packet->stream_index = stream.index;
      av_packet_rescale_ts(packet.get(), encoder.time_base, stream.time_base);
      require(av_interleaved_write_frame(output_.get(), packet.get()) >= 0, "a packet is refused");
    }
  }

  /// The container knows how long a picture lasts from the next one; only the last one needs it.
  std::int64_t lastDuration() const {
    const auto& ticks = recipe_.ticks;
    return ticks.size() < 2 ? recipe_.ticksPerSecond / 25 : ticks.back() - ticks[ticks.size() - 2];
  }

  const MovieRecipe& recipe_;
  OutputPtr output_;
  CodecPtr encoder_;
  AVStream* video_;
  CodecPtr soundEncoder_;
  AVStream* sound_ = nullptr;
  std::int64_t soundTime_ = 0;
  int packetIndex_ = 0;
};

std::string tagText(std::uint32_t tag) {
  std::string text(4, ' ');
  for (int i = 0; i < 4; ++i) {
    text[static_cast<std::size_t>(i)] = static_cast<char>(tag >> (8 * i) & 0xff);
  }
  return text;
}

std::vector<std::string> topLevelBoxes(const std::string& bytes) {
  std::vector<std::string> types;
  const auto number = [&](std::size_t at, std::size_t length) {
    std::uint64_t value = 0;
    for (const char byte : std::string_view(bytes).substr(at, length)) {
      value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
  };
  for (std::size_t at = 0; at + 8 <= bytes.size();) {
    const std::uint64_t size = number(at, 4) == 1 ? number(at + 8, 8) : number(at, 4);
    types.push_back(bytes.substr(at + 4, 4));
    require(size >= 8, "a box of a size that the tests do not know");
    at += size;
  }
  return types;
}

void describeStream(const AVStream& stream, StoredMovie& movie) {
  const AVCodecParameters& parameters = *stream.codecpar;
  movie.codec = avcodec_get_name(parameters.codec_id);
  movie.tag = tagText(parameters.codec_tag);
  movie.profile = parameters.profile;
  movie.saysBt709 = parameters.color_space == AVCOL_SPC_BT709 &&
                    parameters.color_primaries == AVCOL_PRI_BT709 &&
                    parameters.color_trc == AVCOL_TRC_BT709;
  movie.saysLimited = parameters.color_range == AVCOL_RANGE_MPEG;
  movie.saysCentredChroma = parameters.chroma_location == AVCHROMA_LOC_CENTER;
  movie.bitRate = parameters.bit_rate;
}

}  // namespace

void makeMovie(const std::filesystem::path& file, const MovieRecipe& recipe) {
  silenceLibav();
  RecipeMuxer(file, recipe).writeAll();
}

double meanLuma(const VideoFrame& frame) {
  const VideoPlane& plane = frame.planes[0];
  double sum = 0;
  for (int y = 0; y < plane.height; ++y) {
    const std::byte* row = plane.data + y * plane.stride;
    for (int x = 0; x < plane.width; ++x) {
      sum += bytesPerSample(frame.layout) == 1
                 ? std::to_integer<int>(row[x])
                 : reinterpret_cast<const std::uint16_t*>(row)[x] / 4.0;
    }
  }
  return sum / (plane.width * plane.height);
}

std::vector<std::int64_t> evenTicks(int count, std::int64_t step, std::int64_t first) {
  std::vector<std::int64_t> ticks;
  ticks.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    ticks.push_back(first + i * step);
  }
  return ticks;
}

StoredMovie inspect(const std::filesystem::path& file) {
  silenceLibav();
  AVFormatContext* context = nullptr;
  require(avformat_open_input(&context, file.c_str(), nullptr, nullptr) >= 0, "no movie");
  const InputPtr input(context);
  require(avformat_find_stream_info(input.get(), nullptr) >= 0, "no streams");
  StoredMovie movie;
  const AVStream& stream = *input->streams[0];
  describeStream(stream, movie);
  const PacketPtr packet(av_packet_alloc());
  while (av_read_frame(input.get(), packet.get()) >= 0) {
    if (packet->stream_index == stream.index) {
      const double tick = av_q2d(stream.time_base);
      movie.packets.push_back({static_cast<double>(packet->pts) * tick,
                               static_cast<double>(packet->duration) * tick,
                               (packet->flags & AV_PKT_FLAG_KEY) != 0});
    }
    av_packet_unref(packet.get());
  }
  std::ranges::sort(movie.packets, {}, &StoredMovie::Packet::pts);
  movie.boxes = topLevelBoxes(bytesOf(file));
  return movie;
}

std::string bytesOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void writeBytes(const std::filesystem::path& file, std::string_view bytes) {
  std::ofstream stream(file, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace vesk::media
