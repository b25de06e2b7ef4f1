#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <thread>

#include "media/BoundedQueue.h"
#include "media/I420Picture.h"
#include "media/VideoWriter.h"

namespace vesk::exporting {

/// Encodes pictures on a thread of its own, a few behind whoever draws them.
class WriteBehind {
 public:
  explicit WriteBehind(media::VideoWriter writer);
  WriteBehind(const WriteBehind&) = delete;
  WriteBehind& operator=(const WriteBehind&) = delete;
  /// Without finish() the movie is given up and its partial file removed.
  ~WriteBehind();

  /// Hands over a picture, which must not be changed any more; one that was handed over before may
  /// come again. Waits while the encoder is behind. False when the encoder has failed: finish()
  /// then says why.
  bool write(std::shared_ptr<const media::I420Picture> picture);

  /// Waits for the encoder and completes the movie.
  std::expected<void, media::MediaError> finish();

 private:
  using Outcome = std::expected<void, media::MediaError>;
  void encodeAll();

  media::VideoWriter writer_;
  media::BoundedQueue<std::shared_ptr<const media::I420Picture>> pictures_;
  Outcome outcome_;  ///< written by the thread, read after it has been joined
  std::jthread thread_;
};

}  // namespace vesk::exporting
