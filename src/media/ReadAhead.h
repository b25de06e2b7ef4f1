#pragma once

#include <expected>
#include <optional>
#include <thread>

#include "media/BoundedQueue.h"
#include "media/VideoReader.h"

namespace vesk::media {

/// Decodes a movie on a thread of its own, a few pictures ahead of whoever asks.
class ReadAhead {
 public:
  using Picture = std::expected<std::optional<VideoFrame>, MediaError>;

  explicit ReadAhead(VideoReader reader);
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;
  ~ReadAhead();

  /// The next picture in order of presentation; nothing after the last one. End and failure repeat.
  Picture next();

 private:
  BoundedQueue<Picture> pictures_;
  Picture last_;  ///< the end or the failure, once it has come
  bool ended_ = false;
  std::jthread thread_;
};

}  // namespace vesk::media
