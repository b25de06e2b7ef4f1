#include "media/TestSound.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <stdexcept>

#include "media/LibavHandles.h"
#include "media/VideoWriter.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/dict.h>
}

namespace vesk::media {
namespace {

void require(bool holds, const char* what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

AVDictionary* parsed(const std::string& options) {
  AVDictionary* dictionary = nullptr;
  av_dict_parse_string(&dictionary, options.c_str(), "=", ":", 0);
  return dictionary;
}

class RecipeSoundMuxer {
 public:
  RecipeSoundMuxer(const std::filesystem::path& file, const SoundRecipe& recipe) : recipe_(recipe) {
    AVFormatContext* context = nullptr;
    avformat_alloc_output_context2(&context, nullptr, recipe.muxer.c_str(), file.c_str());
    require(context != nullptr, "no output");
    output_.reset(context);
    openEncoder();
    track_ = avformat_new_stream(output_.get(), nullptr);
    track_->time_base = encoder_->time_base;
    require(avcodec_parameters_from_context(track_->codecpar, encoder_.get()) >= 0, "no kind");
    require(avio_open(&output_->pb, file.c_str(), AVIO_FLAG_WRITE) >= 0, "the file does not open");
    AVDictionary* options = parsed(recipe.muxerOptions);
    const int status = avformat_write_header(output_.get(), &options);
    av_dict_free(&options);
    require(status >= 0, "no header");
  }

  void writeAll() {
    const auto total = std::llround(recipe_.seconds * recipe_.rate);
    const int block = encoder_->frame_size > 0 ? encoder_->frame_size : 1000;
    for (std::int64_t at = 0; at < total; at += block) {
      encode(frameAt(at, static_cast<int>(std::min<std::int64_t>(block, total - at))).get());
    }
    encode(nullptr);
    require(av_write_trailer(output_.get()) >= 0, "no trailer");
  }

 private:
  void openEncoder() {
    const AVCodec* codec = avcodec_find_encoder_by_name(recipe_.encoder.c_str());
    require(codec != nullptr, "no such encoder");
    encoder_.reset(avcodec_alloc_context3(codec));
    encoder_->sample_fmt = codec->id == AV_CODEC_ID_AAC         ? AV_SAMPLE_FMT_FLTP
                           : codec->id == AV_CODEC_ID_PCM_F32LE ? AV_SAMPLE_FMT_FLT
                                                                : AV_SAMPLE_FMT_S16;
    encoder_->sample_rate = recipe_.rate;
    encoder_->time_base = {1, recipe_.rate};
    encoder_->bit_rate = 128'000;
    encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_channel_layout_default(&encoder_->ch_layout, recipe_.channels);
    AVDictionary* options = parsed(recipe_.encoderOptions);
    const int status = avcodec_open2(encoder_.get(), codec, &options);
    av_dict_free(&options);
    require(status >= 0, "the encoder does not open");
  }

  FramePtr frameAt(std::int64_t at, int count) const {
    FramePtr frame(av_frame_alloc());
    frame->format = encoder_->sample_fmt;
    frame->nb_samples = count;
    frame->sample_rate = recipe_.rate;
    av_channel_layout_copy(&frame->ch_layout, &encoder_->ch_layout);
    require(av_frame_get_buffer(frame.get(), 0) >= 0, "no memory for a frame");
    for (int channel = 0; channel < recipe_.channels; ++channel) {
      for (int i = 0; i < count; ++i) {
        store(recipe_.wave(at + i, channel), *frame, channel, i);
      }
    }
    frame->pts = recipe_.place ? recipe_.place(at) : at;
    return frame;
  }

  void store(float value, AVFrame& frame, int channel, int index) const {
    const int interleaved = index * recipe_.channels + channel;
    switch (encoder_->sample_fmt) {
      case AV_SAMPLE_FMT_FLTP:
        reinterpret_cast<float*>(frame.extended_data[channel])[index] = value;
        break;
      case AV_SAMPLE_FMT_FLT:
        reinterpret_cast<float*>(frame.data[0])[interleaved] = value;
        break;
      default:
        reinterpret_cast<std::int16_t*>(frame.data[0])[interleaved] =
            static_cast<std::int16_t>(std::lround(value * 32'767));
    }
  }

  void encode(const AVFrame* frame) {
    require(avcodec_send_frame(encoder_.get(), frame) >= 0, "a frame is refused");
    const PacketPtr packet(av_packet_alloc());
    while (avcodec_receive_packet(encoder_.get(), packet.get()) >= 0) {
      av_packet_rescale_ts(packet.get(), encoder_->time_base, track_->time_base);
      require(av_interleaved_write_frame(output_.get(), packet.get()) >= 0, "a packet is refused");
    }
  }

  const SoundRecipe& recipe_;
  OutputPtr output_;
  CodecPtr encoder_;
  AVStream* track_ = nullptr;
};

InputPtr opened(const std::filesystem::path& file) {
  silenceLibav();
  AVFormatContext* context = nullptr;
  require(avformat_open_input(&context, file.c_str(), nullptr, nullptr) >= 0, "no movie");
  InputPtr input(context);
  require(avformat_find_stream_info(input.get(), nullptr) >= 0, "no tracks");
  return input;
}

std::vector<AVStream*> tracksOf(const AVFormatContext& input, AVMediaType type) {
  std::vector<AVStream*> tracks;
  for (unsigned i = 0; i < input.nb_streams; ++i) {
    if (input.streams[i]->codecpar->codec_type == type) {
      tracks.push_back(input.streams[i]);
    }
  }
  return tracks;
}

std::string tagText(std::uint32_t tag) {
  std::string text(4, ' ');
  for (std::size_t i = 0; i < 4; ++i) {
    text[i] = static_cast<char>(tag >> (8 * i) & 0xff);
  }
  return text;
}

StoredTrack storedTrack(const std::filesystem::path& file, AVMediaType type, int number) {
  const InputPtr input = opened(file);
  const AVStream* track = tracksOf(*input, type).at(static_cast<std::size_t>(number));
  const AVCodecParameters& kind = *track->codecpar;
  StoredTrack stored{.codec = avcodec_get_name(kind.codec_id),
                     .tag = tagText(kind.codec_tag),
                     .ticksPerSecond = track->time_base.den,
                     .end = track->start_time + track->duration,
                     .rate = kind.sample_rate,
                     .channels = kind.ch_layout.nb_channels,
                     .bitRate = kind.bit_rate,
                     .isLowComplexity = kind.profile == 1,
                     .isEnabled = (track->disposition & AV_DISPOSITION_DEFAULT) != 0,
                     .saysBt709 = kind.color_space == AVCOL_SPC_BT709 &&
                                  kind.color_primaries == AVCOL_PRI_BT709 &&
                                  kind.color_trc == AVCOL_TRC_BT709};
  const PacketPtr packet(av_packet_alloc());
  while (av_read_frame(input.get(), packet.get()) >= 0) {
    if (packet->stream_index == track->index) {
      stored.packets.push_back({.pts = packet->pts,
                                .duration = packet->duration,
                                .bytes = {reinterpret_cast<const char*>(packet->data),
                                          static_cast<std::size_t>(packet->size)}});
    }
    av_packet_unref(packet.get());
  }
  return stored;
}

void place(const AVFrame& frame, AVRational tick, std::vector<StereoSample>& sound) {
  require(frame.sample_rate == soundRate && frame.format == AV_SAMPLE_FMT_FLTP, "other sound");
  const std::int64_t start = av_rescale_q(frame.pts, tick, {1, soundRate});
  const auto* left = reinterpret_cast<const float*>(frame.extended_data[0]);
  const auto* right = frame.ch_layout.nb_channels > 1
                          ? reinterpret_cast<const float*>(frame.extended_data[1])
                          : left;
  for (int i = 0; i < frame.nb_samples; ++i) {
    const std::int64_t at = start + i;
    if (at >= 0) {
      sound.resize(std::max(sound.size(), static_cast<std::size_t>(at) + 1));
      sound[static_cast<std::size_t>(at)] = {left[i], right[i]};
    }
  }
}

}  // namespace

void makeSound(const std::filesystem::path& file, const SoundRecipe& recipe) {
  silenceLibav();
  RecipeSoundMuxer(file, recipe).writeAll();
}

void makeSilentMovie(const std::filesystem::path& file, Container container, int frames) {
  auto writer = VideoWriter::open(
      file, {.container = container, .width = 128, .height = 72, .fps = 60, .bitRate = 300'000});
  require(writer.has_value(), "no movie");
  I420Picture picture(128, 72);
  for (int i = 0; i < frames; ++i) {
    std::fill_n(picture.planes()[0].data, 4'000, static_cast<std::uint8_t>(40 + i % 200));
    require(writer->write(picture, i).has_value(), "a picture is refused");
  }
  require(writer->finish().has_value(), "the movie is not completed");
}

std::function<float(std::int64_t, int)> tone(double frequency, float amplitude, int rate) {
  return [=](std::int64_t index, int /*channel*/) {
    const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(index) / rate;
    return amplitude * static_cast<float>(std::sin(phase));
  };
}

std::function<float(std::int64_t, int)> beep(double start, float amplitude, int rate) {
  const auto first = std::llround(start * rate);
  return [=, wave = tone(1000, amplitude, rate)](std::int64_t index, int channel) {
    return index >= first && index < first + rate / 10 ? wave(index - first, channel) : 0;
  };
}

std::vector<StereoSample> played(const std::filesystem::path& file, int track) {
  const InputPtr input = opened(file);
  const AVStream* source = tracksOf(*input, AVMEDIA_TYPE_AUDIO).at(static_cast<std::size_t>(track));
  const AVCodec* codec = avcodec_find_decoder(source->codecpar->codec_id);
  const CodecPtr decoder(avcodec_alloc_context3(codec));
  require(avcodec_parameters_to_context(decoder.get(), source->codecpar) >= 0, "no kind");
  decoder->pkt_timebase = source->time_base;
  require(avcodec_open2(decoder.get(), codec, nullptr) >= 0, "no decoder");

  std::vector<StereoSample> sound;
  const FramePtr frame(av_frame_alloc());
  const auto takeFrames = [&] {
    while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0) {
      place(*frame, source->time_base, sound);
    }
  };
  const PacketPtr packet(av_packet_alloc());
  while (av_read_frame(input.get(), packet.get()) >= 0) {
    if (packet->stream_index == source->index) {
      avcodec_send_packet(decoder.get(), packet.get());
      takeFrames();
    }
    av_packet_unref(packet.get());
  }
  avcodec_send_packet(decoder.get(), nullptr);
  takeFrames();
  return sound;
}

double beepTime(const std::vector<StereoSample>& sound) {
  constexpr std::size_t length = soundRate / 10;
  constexpr std::size_t period = soundRate / 1000;
  std::vector<std::complex<double>> turned(sound.size());
  for (std::size_t i = 0; i < sound.size(); ++i) {
    const double angle = -2 * std::numbers::pi * static_cast<double>(i % period) / period;
    turned[i] = std::polar(double{sound[i].left} + double{sound[i].right}, angle);
  }
  std::complex<double> sum = 0;
  double strongest = 0;
  std::size_t end = 0;
  for (std::size_t i = 0; i < sound.size(); ++i) {
    sum += turned[i];
    if (i >= length) {
      sum -= turned[i - length];
    }
    if (std::abs(sum) > strongest) {
      strongest = std::abs(sum);
      end = i + 1;
    }
  }
  return (static_cast<double>(end) - length) / soundRate;
}

double loudness(const std::vector<StereoSample>& sound, double from, double to) {
  const auto first = static_cast<std::size_t>(from * soundRate);
  const auto last = std::min(sound.size(), static_cast<std::size_t>(to * soundRate));
  double sum = 0;
  for (std::size_t i = first; i < last; ++i) {
    sum += double{sound[i].left} * double{sound[i].left} +
           double{sound[i].right} * double{sound[i].right};
  }
  return last > first ? std::sqrt(sum / (2 * static_cast<double>(last - first))) : 0;
}

std::vector<std::string> StoredTrack::payloads() const {
  std::vector<std::string> all;
  for (const StoredPacket& packet : packets) {
    all.push_back(packet.bytes);
  }
  return all;
}

StoredTrack storedPicture(const std::filesystem::path& file) {
  return storedTrack(file, AVMEDIA_TYPE_VIDEO, 0);
}

StoredTrack storedSound(const std::filesystem::path& file, int track) {
  return storedTrack(file, AVMEDIA_TYPE_AUDIO, track);
}

int soundTrackCount(const std::filesystem::path& file) {
  return static_cast<int>(tracksOf(*opened(file), AVMEDIA_TYPE_AUDIO).size());
}

}  // namespace vesk::media
