#include "media/EncodeFrame.h"

#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace vesk::media {

int encodeFrame(AVCodecContext& codec, const AVFrame* frame, std::vector<PacketPtr>& ready) {
  int status = avcodec_send_frame(&codec, frame);
  while (status >= 0) {
    PacketPtr packet(av_packet_alloc());
    if (packet == nullptr) {
      return AVERROR(ENOMEM);
    }
    status = avcodec_receive_packet(&codec, packet.get());
    if (status >= 0) {
      ready.push_back(std::move(packet));
    }
  }
  return status == AVERROR(EAGAIN) || status == AVERROR_EOF ? 0 : status;
}

}  // namespace vesk::media
