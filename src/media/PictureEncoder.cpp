#include "media/PictureEncoder.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include "media/EncodeFrame.h"
#include "media/PictureFrame.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/dict.h>
#include <libavutil/hwcontext.h>
}

namespace vesk::media {
namespace {

using Place = CaptureEncoder::Place;

constexpr int captureKeyFrameSeconds = 2;
constexpr int widestCapture = 16384;
// H.264 without delay cuts each picture into one slice a thread, which costs a little size each.
constexpr int mostEncoderThreads = 4;
constexpr int framesInHardware = 8;

bool isPossible(const PictureTrackSettings& settings) {
  const auto isSide = [](int side) { return side > 0 && side <= widestCapture && side % 2 == 0; };
  return isSide(settings.width) && isSide(settings.height) && settings.fps > 0 &&
         settings.bitRate > 0;
}

int threadsOf(const CaptureEncoder& choice) {
  const auto processors = static_cast<int>(std::thread::hardware_concurrency());
  const bool isSliced = choice.codec == PictureCodec::h264 && choice.place == Place::processor;
  return isSliced ? std::clamp(processors, 1, mostEncoderThreads) : 0;
}

void configure(AVCodecContext& codec, const CaptureEncoder& choice,
               const PictureTrackSettings& settings) {
  codec.width = settings.width;
  codec.height = settings.height;
  codec.pix_fmt = choice.place == Place::processor ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_NV12;
  codec.time_base = {1, settings.fps};
  codec.framerate = {settings.fps, 1};
  codec.bit_rate = settings.bitRate;
  codec.gop_size = settings.fps * captureKeyFrameSeconds;
  codec.max_b_frames = 0;
  codec.thread_count = threadsOf(choice);
  codec.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (choice.codec == PictureCodec::h264) {
    codec.profile = FF_PROFILE_H264_HIGH;
  }
  describeColours(codec);
}

struct Unreference {
  void operator()(AVBufferRef* buffer) const noexcept { av_buffer_unref(&buffer); }
};
using BufferPtr = std::unique_ptr<AVBufferRef, Unreference>;

/// The first graphics device that VAAPI can use.
BufferPtr vaapiDevice() {
  constexpr int first = 128;  // of the names that the kernel gives
  constexpr int count = 8;
  for (int number = first; number < first + count; ++number) {
    const std::string device = "/dev/dri/renderD" + std::to_string(number);
    AVBufferRef* context = nullptr;
    std::error_code ignored;
    if (std::filesystem::exists(device, ignored) &&
        av_hwdevice_ctx_create(&context, AV_HWDEVICE_TYPE_VAAPI, device.c_str(), nullptr, 0) >= 0) {
      return BufferPtr(context);
    }
  }
  return nullptr;
}

/// Makes the encoder take pictures that lie in the memory of the graphics device.
int useVaapi(AVCodecContext& codec) {
  const BufferPtr device = vaapiDevice();
  BufferPtr frames(device == nullptr ? nullptr : av_hwframe_ctx_alloc(device.get()));
  if (frames == nullptr) {
    return AVERROR(ENODEV);
  }
  auto& description = *reinterpret_cast<AVHWFramesContext*>(frames->data);
  description.format = AV_PIX_FMT_VAAPI;
  description.sw_format = AV_PIX_FMT_NV12;
  description.width = codec.width;
  description.height = codec.height;
  description.initial_pool_size = framesInHardware;
  const int status = av_hwframe_ctx_init(frames.get());
  if (status >= 0) {
    codec.pix_fmt = AV_PIX_FMT_VAAPI;
    codec.hw_frames_ctx = frames.release();
  }
  return status;
}

std::expected<FramePtr, int> uploaded(const AVFrame& frame, AVBufferRef& pool) {
  FramePtr target(av_frame_alloc());
  int status = target == nullptr ? AVERROR(ENOMEM) : av_hwframe_get_buffer(&pool, target.get(), 0);
  if (status >= 0) {
    status = av_hwframe_transfer_data(target.get(), &frame, 0);
  }
  if (status < 0) {
    return std::unexpected(status);
  }
  return target;
}

void setOption(AVDictionary*& options, const char* name, const char* value) {
  if (value != nullptr) {
    av_dict_set(&options, name, value, 0);
  }
}

int openCodec(AVCodecContext& codec, const CaptureEncoder& choice) {
  AVDictionary* options = nullptr;
  setOption(options, "preset", choice.preset);
  setOption(options, "tune", choice.tune);
  setOption(options, choice.codec == PictureCodec::hevc ? "x265-params" : "x264-params",
            choice.parameters);
  setOption(options, "forced-idr", "1");
  setOption(options, "forced_idr", "1");  // as the encoder of QSV calls it
  setOption(options, "async_depth", "1");
  if (choice.place == Place::nvenc) {
    setOption(options, "delay", "0");
    setOption(options, "zerolatency", "1");
  }
  const int status = avcodec_open2(&codec, codec.codec, &options);
  av_dict_free(&options);
  return status;
}

}  // namespace

std::expected<PictureEncoder, int> PictureEncoder::open(const CaptureEncoder& choice,
                                                        const PictureTrackSettings& settings) {
  silenceLibav();
  const AVCodec* encoder = avcodec_find_encoder_by_name(choice.encoder);
  if (encoder == nullptr) {
    return std::unexpected(AVERROR_ENCODER_NOT_FOUND);
  }
  CodecPtr codec(isPossible(settings) ? avcodec_alloc_context3(encoder) : nullptr);
  if (codec == nullptr) {
    return std::unexpected(AVERROR(EINVAL));
  }
  configure(*codec, choice, settings);
  int status = choice.place == Place::vaapi ? useVaapi(*codec) : 0;
  if (status >= 0) {
    status = openCodec(*codec, choice);
  }
  if (status < 0) {
    return std::unexpected(status);
  }
  const unsigned tag =
      choice.codec == PictureCodec::hevc ? MKTAG('h', 'v', 'c', '1') : MKTAG('a', 'v', 'c', '1');
  return PictureEncoder(std::move(codec), choice.place, tag);
}

PictureEncoder::PictureEncoder(CodecPtr codec, Place place, unsigned tag)
    : codec_(std::move(codec)), place_(place), tag_(tag) {}

int PictureEncoder::encode(const I420Picture& picture, std::int64_t time, bool isKey,
                           std::vector<PacketPtr>& ready) {
  assert(picture.width() == codec_->width && picture.height() == codec_->height);
  assert(times_.empty() || time > times_.back());
  const auto frame = frameOf(picture);
  if (!frame) {
    return frame.error();
  }
  (*frame)->pts = count_++;
  (*frame)->pict_type = isKey ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
  times_.push_back(time);
  return send(frame->get(), ready);
}

int PictureEncoder::finish(std::vector<PacketPtr>& ready) {
  return send(nullptr, ready);
}

/// The encoders on the processor copy what they keep; the others keep the frame itself.
std::expected<FramePtr, int> PictureEncoder::frameOf(const I420Picture& picture) const {
  FramePtr frame = place_ == Place::processor ? FramePtr(av_frame_alloc()) : nv12Frame(picture);
  if (frame == nullptr) {
    return std::unexpected(AVERROR(ENOMEM));
  }
  if (place_ == Place::vaapi) {
    return uploaded(*frame, *codec_->hw_frames_ctx);
  }
  if (place_ == Place::processor) {
    if (const int status = pointAt(picture, *frame); status < 0) {
      return std::unexpected(status);
    }
  }
  return frame;
}

int PictureEncoder::send(const AVFrame* frame, std::vector<PacketPtr>& ready) {
  const std::size_t before = ready.size();
  const int status = encodeFrame(*codec_, frame, ready);
  for (std::size_t i = before; i < ready.size() && !times_.empty(); ++i) {
    ready[i]->pts = times_.front();
    ready[i]->dts = times_.front();
    ready[i]->duration = 0;
    times_.pop_front();
  }
  return status;
}

}  // namespace vesk::media
