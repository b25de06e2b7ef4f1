#include "media/MovieOutput.h"

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

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

const char* muxerName(Container container) {
  return container == Container::mp4 ? "mp4" : "mov";
}

bool canHold(Container container, const AVCodecParameters& kind) {
  const AVOutputFormat* format = av_guess_format(muxerName(container), nullptr, nullptr);
  return format != nullptr &&
         avformat_query_codec(format, kind.codec_id, FF_COMPLIANCE_NORMAL) == 1;
}

std::expected<MovieOutput, MediaError> MovieOutput::create(const fs::path& file, const char* muxer,
                                                           const fs::path& shownAs) {
  silenceLibav();
  AVFormatContext* context = nullptr;
  const std::string address = "file:" + file.string();
  int status = avformat_alloc_output_context2(&context, nullptr, muxer, address.c_str());
  if (status < 0) {
    const auto kind = status == AVERROR(ENOMEM) ? Kind::writeFailed : Kind::unsupported;
    return std::unexpected(writingError(kind, status, shownAs));
  }
  OutputPtr output(context);
  status = avio_open(&output->pb, address.c_str(), AVIO_FLAG_WRITE);
  if (status < 0) {
    return std::unexpected(writingError(Kind::writeFailed, status, shownAs));
  }
  // Packets go in as they are: no filter changes their bytes and nothing moves their stamps.
  output->flags &= ~AVFMT_FLAG_AUTO_BSF;
  output->avoid_negative_ts = 0;
  return MovieOutput(std::move(output), file, shownAs);
}

MovieOutput::MovieOutput(OutputPtr output, fs::path file, fs::path shownAs)
    : output_(std::move(output)), file_(std::move(file)), shownAs_(std::move(shownAs)) {}

MovieOutput::~MovieOutput() {
  if (output_ != nullptr) {
    output_.reset();
    std::error_code ignored;
    fs::remove(file_, ignored);
  }
}

AVStream* MovieOutput::addTrack(const AVCodecParameters& kind, AVRational tick) {
  AVStream* track = avformat_new_stream(output_.get(), nullptr);
  if (track == nullptr || avcodec_parameters_copy(track->codecpar, &kind) < 0) {
    return nullptr;
  }
  track->time_base = tick;
  // Several tracks of a kind would otherwise be alternatives, of which a player plays one.
  track->disposition = AV_DISPOSITION_DEFAULT;
  return track;
}

bool MovieOutput::needsGlobalHeader() const {
  return (output_->oformat->flags & AVFMT_GLOBALHEADER) != 0;
}

std::expected<void, MediaError> MovieOutput::start() {
  AVDictionary* options = nullptr;
  av_dict_set(&options, "movflags", "+faststart+write_colr", 0);
  // The unit of the edit lists, which tell where a track starts: a sample of the usual sound.
  av_dict_set(&options, "movie_timescale", "48000", 0);
  const int status = avformat_write_header(output_.get(), &options);
  av_dict_free(&options);
  if (status < 0) {
    return failure(status);
  }
  return {};
}

std::expected<int, MediaError> MovieOutput::write(AVPacket& packet) {
  // Interleaving inside libav would refuse a packet only later, when it is not told which it was.
  const int status = av_write_frame(output_.get(), &packet);
  if (const int fileStatus = output_->pb->error; fileStatus < 0) {
    return failure(fileStatus);
  }
  return status;
}

std::expected<void, MediaError> MovieOutput::finish() {
  int status = av_write_trailer(output_.get());
  if (status >= 0) {
    status = avio_closep(&output_->pb);
  }
  if (status < 0) {
    return failure(status);
  }
  output_.reset();
  return {};
}

std::unexpected<MediaError> MovieOutput::failure(int code) const {
  return std::unexpected(writingError(Kind::writeFailed, code, shownAs_));
}

}  // namespace vesk::media
