#include "media/LibavHandles.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace vesk::media {

void LibavRelease::operator()(AVCodecContext* codec) const noexcept {
  avcodec_free_context(&codec);
}

void LibavRelease::operator()(AVCodecParameters* parameters) const noexcept {
  avcodec_parameters_free(&parameters);
}

void LibavRelease::operator()(AVFrame* frame) const noexcept {
  av_frame_free(&frame);
}

void LibavRelease::operator()(AVPacket* packet) const noexcept {
  av_packet_free(&packet);
}

void LibavRelease::operator()(SwrContext* resampler) const noexcept {
  swr_free(&resampler);
}

void LibavRelease::operator()(SwsContext* scaler) const noexcept {
  sws_freeContext(scaler);
}

void InputRelease::operator()(AVFormatContext* input) const noexcept {
  avformat_close_input(&input);
}

void OutputRelease::operator()(AVFormatContext* output) const noexcept {
  avio_closep(&output->pb);
  avformat_free_context(output);
}

void silenceLibav() noexcept {
  av_log_set_level(AV_LOG_QUIET);
}

}  // namespace vesk::media
