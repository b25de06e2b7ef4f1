#include "export/WriteBehind.h"

#include <utility>

namespace vesk::exporting {
namespace {

constexpr std::size_t picturesBehind = 4;

}  // namespace

WriteBehind::WriteBehind(media::VideoWriter writer)
    : writer_(std::move(writer)), pictures_(picturesBehind), thread_([this] { encodeAll(); }) {}

WriteBehind::~WriteBehind() {
  pictures_.close();
  if (thread_.joinable()) thread_.join();
}

void WriteBehind::encodeAll() {
  std::int64_t index = 0;
  while (const auto picture = pictures_.pop()) {
    outcome_ = writer_.write(**picture, index++);
    if (!outcome_) {
      pictures_.close();
      return;
    }
  }
}

bool WriteBehind::write(std::shared_ptr<const media::I420Picture> picture) {
  return pictures_.push(std::move(picture));
}

std::expected<void, media::MediaError> WriteBehind::finish() {
  pictures_.close();
  thread_.join();
  if (!outcome_) return outcome_;
  return writer_.finish();
}

}  // namespace vesk::exporting
