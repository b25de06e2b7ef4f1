#pragma once

#include <expected>

#include "media/LibavHandles.h"
#include "media/MediaError.h"
#include "media/VideoSettings.h"

namespace vesk::media {

/// One way to encode the pictures of a container.
struct EncoderChoice {
  const char* encoder;           ///< libav's name of it
  const char* format;            ///< how messages name the result
  const char* preset;            ///< speed against size
  const char* parameterName;     ///< the option that takes `parameters`
  const char* parameters;        ///< what differs from the preset
  const char* threadsParameter;  ///< the parameter that sets the number of threads
  const char* tag;               ///< four characters that the container stores
};

[[nodiscard]] const EncoderChoice& encoderFor(Container container) noexcept;

/// `needsGlobalHeader`: the container stores the parameter sets apart from the pictures.
[[nodiscard]] std::expected<CodecPtr, MediaError> openEncoder(const EncoderChoice& choice,
                                                              const VideoSettings& settings,
                                                              bool needsGlobalHeader);

}  // namespace vesk::media
