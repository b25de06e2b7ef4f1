#include "media/ReadAhead.h"

#include <utility>

namespace vesk::media {
namespace {

// Enough to even out the cost of key frames; more would only hold memory.
constexpr std::size_t picturesAhead = 3;

bool isLast(const ReadAhead::Picture& picture) {
  return !picture || !picture->has_value();
}

}  // namespace

ReadAhead::ReadAhead(VideoReader reader)
    : pictures_(picturesAhead), thread_([this, reader = std::move(reader)]() mutable {
        for (bool goesOn = true; goesOn;) {
          Picture picture = reader.next();
          const bool last = isLast(picture);
          goesOn = pictures_.push(std::move(picture)) && !last;
        }
      }) {}

ReadAhead::~ReadAhead() {
  pictures_.close();
}

ReadAhead::Picture ReadAhead::next() {
  if (ended_) return last_;
  // The thread ends with the end or a failure as its last value, so there is one to take.
  Picture picture = pictures_.pop().value_or(Picture(std::nullopt));
  if (isLast(picture)) {
    ended_ = true;
    last_ = picture;
  }
  return picture;
}

}  // namespace vesk::media
