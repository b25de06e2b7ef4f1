#include "media/FragmentWriter.h"

#include <string>
#include <system_error>
#include <utility>

#include "media/LibavError.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

}  // namespace

std::expected<FragmentWriter, MediaError> FragmentWriter::create(const fs::path& file,
                                                                 GrowingFile kind) {
  silenceLibav();
  AVFormatContext* context = nullptr;
  const char* muxer = kind == GrowingFile::sound ? "ipod" : "mov";
  const std::string address = "file:" + file.string();
  int status = avformat_alloc_output_context2(&context, nullptr, muxer, address.c_str());
  if (status < 0) {
    return std::unexpected(writingError(Kind::unsupported, status, file));
  }
  OutputPtr output(context);
  std::error_code ignored;
  fs::remove(file, ignored);
  status = avio_open(&output->pb, address.c_str(), AVIO_FLAG_WRITE);
  if (status < 0) {
    return std::unexpected(writingError(Kind::writeFailed, status, file));
  }
  // Packets go in as they are: no filter changes their bytes and nothing moves their stamps.
  output->flags &= ~AVFMT_FLAG_AUTO_BSF;
  output->avoid_negative_ts = 0;
  output->flush_packets = 1;
  return FragmentWriter(std::move(output), file);
}

FragmentWriter::FragmentWriter(OutputPtr output, fs::path file)
    : output_(std::move(output)), file_(std::move(file)) {}

const AVStream* FragmentWriter::addTrack(const AVCodecContext& encoder, AVRational tick,
                                         unsigned tag) {
  AVStream* track = avformat_new_stream(output_.get(), nullptr);
  if (track == nullptr || avcodec_parameters_from_context(track->codecpar, &encoder) < 0) {
    return nullptr;
  }
  track->codecpar->codec_tag = tag;
  track->time_base = tick;
  track->avg_frame_rate = encoder.framerate;
  return track;
}

std::expected<void, MediaError> FragmentWriter::start() {
  AVDictionary* options = nullptr;
  // The index waits for the first packets, which tell how long each encoder takes to start up.
  av_dict_set(&options, "movflags",
              "+frag_custom+delay_moov+default_base_moof+skip_trailer+write_colr", 0);
  // Edits are told in it: a multiple of the ticks of pictures and of sound.
  av_dict_set(&options, "movie_timescale", "240000", 0);
  const int status = avformat_write_header(output_.get(), &options);
  av_dict_free(&options);
  return conclude(status);
}

std::expected<void, MediaError> FragmentWriter::write(AVPacket& packet, const AVStream& track) {
  packet.stream_index = track.index;
  const int status = av_write_frame(output_.get(), &packet);
  av_packet_unref(&packet);
  return conclude(status);
}

std::expected<void, MediaError> FragmentWriter::cut() {
  // While there is no index, asking for a fragment gives that alone.
  int status = hasIndex_ ? 0 : av_write_frame(output_.get(), nullptr);
  if (status >= 0) {
    status = av_write_frame(output_.get(), nullptr);
  }
  auto outcome = conclude(status);
  if (outcome) {
    hasIndex_ = true;
    written_ = static_cast<std::uint64_t>(avio_tell(output_->pb));
  }
  return outcome;
}

std::expected<void, MediaError> FragmentWriter::finish() {
  if (auto outcome = cut(); !outcome) {
    return outcome;
  }
  int status = av_write_trailer(output_.get());
  if (status >= 0) {
    status = avio_closep(&output_->pb);
  }
  auto outcome = conclude(status);
  output_.reset();
  return outcome;
}

/// Passes a status on; one that tells of a failure closes the file.
std::expected<void, MediaError> FragmentWriter::conclude(int status) {
  const bool hasFile = output_->pb != nullptr;
  const int code = hasFile && output_->pb->error < 0 ? output_->pb->error : status;
  if (code >= 0) {
    return {};
  }
  output_.reset();
  std::error_code ignored;
  if (hasIndex_) {
    fs::resize_file(file_, written_, ignored);
  } else {
    fs::remove(file_, ignored);
  }
  return std::unexpected(writingError(Kind::writeFailed, code, file_));
}

}  // namespace vesk::media
