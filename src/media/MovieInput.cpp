#include "media/MovieInput.h"

#include <fmt/format.h>

#include <limits>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <utility>

#include "media/LibavError.h"
#include "media/MovieBoxes.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

/// What can be told before libav opens the file, which would wait for ever on a pipe.
std::optional<MediaError> objectionToSource(const fs::path& file) {
  std::error_code failure;
  const fs::file_status status = fs::status(file, failure);
  if (failure) {
    return readingError(Kind::openFailed, AVERROR(failure.value()), file);
  }
  const std::string name = file.filename().string();
  if (!fs::is_regular_file(status)) {
    return MediaError{Kind::openFailed, fmt::format("“{}” 不是普通文件", name)};
  }
  if (fs::file_size(file, failure) == 0 && !failure) {
    return MediaError{Kind::openFailed, fmt::format("“{}” 是空文件", name)};
  }
  if (claimsTooManySamples(file)) {
    return readingError(Kind::openFailed, AVERROR_INVALIDDATA, file);
  }
  return std::nullopt;
}

bool isSound(const AVCodecParameters& kind) {
  return kind.codec_type == AVMEDIA_TYPE_AUDIO && kind.ch_layout.nb_channels > 0 &&
         isSoundRate(kind.sample_rate);
}

std::span<AVStream* const> tracksOf(const AVFormatContext& input) {
  return {input.streams, input.nb_streams};
}

}  // namespace

std::expected<InputPtr, MediaError> openMovie(const fs::path& file) {
  silenceLibav();
  if (auto objection = objectionToSource(file)) {
    return std::unexpected(std::move(*objection));
  }
  AVDictionary* options = nullptr;
  av_dict_set(&options, "protocol_whitelist", "file", 0);
  av_dict_set(&options, "enable_drefs", "0", 0);
  av_dict_set(&options, "use_absolute_path", "0", 0);
  av_dict_set(&options, "fflags", "+discardcorrupt", 0);  // a packet cut short: half a picture
  AVFormatContext* context = nullptr;
  // The prefix keeps a name such as "concat:a" from being taken for a protocol.
  const std::string address = "file:" + file.string();
  int status =
      avformat_open_input(&context, address.c_str(), av_find_input_format("mov"), &options);
  av_dict_free(&options);
  if (status < 0) {
    return std::unexpected(readingError(Kind::openFailed, status, file));
  }
  InputPtr input(context);
  // Without a look into the stream, a decoder may not know how far it has to reorder.
  status = avformat_find_stream_info(input.get(), nullptr);
  if (status < 0) {
    return std::unexpected(readingError(Kind::openFailed, status, file));
  }
  return input;
}

AVStream* firstVideoTrack(const AVFormatContext& input) {
  for (AVStream* track : tracksOf(input)) {
    const bool isCover = (track->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
    if (track->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !isCover) {
      return track;
    }
  }
  return nullptr;
}

AVStream* firstSoundTrack(const AVFormatContext& input) {
  for (AVStream* track : tracksOf(input)) {
    if (isSound(*track->codecpar)) {
      return track;
    }
  }
  return nullptr;
}

double durationOf(const AVStream& track) {
  const bool isKnown = track.duration != AV_NOPTS_VALUE && track.duration > 0;
  return isKnown ? static_cast<double>(track.duration) * av_q2d(track.time_base)
                 : std::numeric_limits<double>::infinity();
}

void readOnly(const AVStream& track, AVFormatContext& input) {
  for (AVStream* each : tracksOf(input)) {
    each->discard = each == &track ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
  }
}

}  // namespace vesk::media
