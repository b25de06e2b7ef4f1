#include "export/SourceFrames.h"

#include <utility>

namespace vesk::exporting {

SourceFrames::SourceFrames(Next next) : next_(std::move(next)) {}

std::expected<std::optional<media::VideoFrame>, media::MediaError> SourceFrames::at(double time) {
  // A picture on the grid belongs to its own index, whatever the last bit of its time says.
  constexpr double gridTolerance = 0.000001;
  const auto advance = [&]() -> std::expected<void, media::MediaError> {
    auto picture = next_();
    if (!picture) return std::unexpected(picture.error());
    pending_ = std::move(*picture);
    return {};
  };
  if (!std::exchange(started_, true)) {
    if (const auto read = advance(); !read) return std::unexpected(read.error());
    if (pending_) firstPTS_ = pending_->pts;
  }
  while (pending_ && pending_->pts - firstPTS_ <= time + gridTolerance) {
    held_ = std::exchange(pending_, std::nullopt);
    if (const auto read = advance(); !read) return std::unexpected(read.error());
  }
  return held_;
}

}  // namespace vesk::exporting
