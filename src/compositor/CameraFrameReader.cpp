#include "compositor/CameraFrameReader.h"

#include <memory>
#include <utility>

#include "media/ReadAhead.h"
#include "media/VideoReader.h"
#include "package/Log.h"

namespace vesk::compositor {
namespace {

void logFailure(const media::MediaError& error) {
  package::log(package::LogCategory::render).error("camera: {}", error.message);
}

}  // namespace

CameraFrameReader::CameraFrameReader(const std::filesystem::path& file) {
  auto reader = media::VideoReader::open(file);
  if (!reader) {
    logFailure(reader.error());
    return;
  }
  const auto pictures = std::make_shared<media::ReadAhead>(*std::move(reader));
  next_ = [pictures] { return pictures->next(); };
}

const std::optional<media::VideoFrame>& CameraFrameReader::frame(double seconds) {
  // Times on both sides are sums and quotients; what is equal but for the last bits is equal.
  constexpr double tolerance = 0.000001;
  while (next_ && (!current_ || current_->pts < seconds - tolerance)) {
    auto picture = next_();
    if (picture && *picture) {
      current_ = *std::move(picture);
      continue;
    }
    if (!picture) logFailure(picture.error());
    next_ = nullptr;
  }
  return current_;
}

}  // namespace vesk::compositor
