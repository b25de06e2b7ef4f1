#pragma once

#include <functional>

struct pw_stream;
struct spa_buffer;

namespace vesk::capture::pipewire {

/// Hands the latest buffer of a stream to a function and gives it back; earlier ones that wait are
/// given back unread, for the time of the stream is that of the last. On the stream's own thread.
void deliverLatest(pw_stream* stream, const std::function<void(const spa_buffer&)>& deliver);

}  // namespace vesk::capture::pipewire
