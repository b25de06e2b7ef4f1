#include "capture/pipewire/LatestBuffer.h"

#include <pipewire/stream.h>

#include <utility>

namespace vesk::capture::pipewire {

void deliverLatest(pw_stream* stream, const std::function<void(const spa_buffer&)>& deliver) {
  pw_buffer* buffer = pw_stream_dequeue_buffer(stream);
  if (buffer == nullptr) return;
  while (pw_buffer* const later = pw_stream_dequeue_buffer(stream)) {
    pw_stream_queue_buffer(stream, std::exchange(buffer, later));
  }
  deliver(*buffer->buffer);
  pw_stream_queue_buffer(stream, buffer);
}

}  // namespace vesk::capture::pipewire
