#pragma once

#include <memory>

struct AVBufferRef;
struct AVCodecContext;
struct AVCodecParameters;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct SwrContext;
struct SwsContext;

namespace vesk::media {

struct LibavRelease {
  void operator()(AVCodecContext* codec) const noexcept;
  void operator()(AVCodecParameters* parameters) const noexcept;
  void operator()(AVFrame* frame) const noexcept;
  void operator()(AVPacket* packet) const noexcept;
  void operator()(SwrContext* resampler) const noexcept;
  void operator()(SwsContext* scaler) const noexcept;
};

struct InputRelease {
  void operator()(AVFormatContext* input) const noexcept;
};

/// Closes the file without completing the movie in it.
struct OutputRelease {
  void operator()(AVFormatContext* output) const noexcept;
};

using CodecPtr = std::unique_ptr<AVCodecContext, LibavRelease>;
using CodecParametersPtr = std::unique_ptr<AVCodecParameters, LibavRelease>;
using FramePtr = std::unique_ptr<AVFrame, LibavRelease>;
using PacketPtr = std::unique_ptr<AVPacket, LibavRelease>;
using ResamplerPtr = std::unique_ptr<SwrContext, LibavRelease>;
using ScalerPtr = std::unique_ptr<SwsContext, LibavRelease>;
using InputPtr = std::unique_ptr<AVFormatContext, InputRelease>;
using OutputPtr = std::unique_ptr<AVFormatContext, OutputRelease>;

/// Keeps libav off the standard streams, which belong to the commands and the log. What went wrong
/// is told by its error codes.
void silenceLibav() noexcept;

}  // namespace vesk::media
