#include "editor/pipewire/PlaybackStream.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace vesk::editor::pipewire {
namespace {

using media::HostTime;
using media::StereoSample;
using media::pipewire::Connection;

/// What the stream says of its time may be as old as this; an older word is of before it rested.
constexpr std::chrono::milliseconds oldestWord{500};

pw_properties* streamProperties() {
  return pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                           PW_KEY_MEDIA_ROLE, "Movie", PW_KEY_APP_NAME, "Vesk", PW_KEY_NODE_NAME,
                           "com.ordel.vesk.preview", PW_KEY_NODE_LATENCY, "1024/48000", nullptr);
}

spa_audio_info_raw stereo() {
  spa_audio_info_raw format{};
  format.format = SPA_AUDIO_FORMAT_F32;
  format.rate = media::soundRate;
  format.channels = 2;
  format.position[0] = SPA_AUDIO_CHANNEL_FL;
  format.position[1] = SPA_AUDIO_CHANNEL_FR;
  return format;
}

/// When a sample that is queued now is heard: all that is queued, held by the resampler and on the
/// way through the graph comes first. Nothing while the stream does not know.
std::optional<HostTime> hearingTime(pw_stream* stream, HostTime now) {
  pw_time time{};
  if (pw_stream_get_time_n(stream, &time, sizeof time) < 0) return std::nullopt;
  const HostTime word{time.now};
  if (time.rate.denom == 0 || word < now - oldestWord) return std::nullopt;
  const double ahead = static_cast<double>(time.delay) * time.rate.num / time.rate.denom +
                       static_cast<double>(time.queued + time.buffered) / media::soundRate;
  return word + std::chrono::duration_cast<HostTime>(std::chrono::duration<double>{ahead});
}

}  // namespace

/// The server's output devices. The one that session managers put in place of none does not count.
class PlaybackStream::Devices {
 public:
  explicit Devices(PlaybackStream& owner)
      : owner_{owner},
        registry_{pw_core_get_registry(owner.connection_->core(), PW_VERSION_REGISTRY, 0)} {
    pw_registry_add_listener(registry_, &hook_, &events(), this);
  }
  Devices(const Devices&) = delete;
  Devices& operator=(const Devices&) = delete;
  ~Devices() {
    spa_hook_remove(&hook_);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
  }

 private:
  static const pw_registry_events& events() {
    static const pw_registry_events events{
        .version = PW_VERSION_REGISTRY_EVENTS,
        .global =
            [](void* self, std::uint32_t id, std::uint32_t /*permissions*/, const char* /*type*/,
               std::uint32_t /*version*/, const spa_dict* properties) {
              if (isDevice(properties)) static_cast<Devices*>(self)->add(id);
            },
        .global_remove = [](void* self,
                            std::uint32_t id) { static_cast<Devices*>(self)->remove(id); }};
    return events;
  }

  static bool isDevice(const spa_dict* properties) {
    if (properties == nullptr) return false;
    const auto value = [properties](const char* key) {
      const char* text = spa_dict_lookup(properties, key);
      return std::string_view{text == nullptr ? "" : text};
    };
    const std::string_view kind = value(PW_KEY_MEDIA_CLASS);
    return (kind == "Audio/Sink" || kind == "Audio/Duplex") &&
           value(PW_KEY_NODE_NAME) != "auto_null";
  }

  void add(std::uint32_t id) {
    ids_.push_back(id);
    owner_.hasDevice_ = true;
  }

  void remove(std::uint32_t id) {
    std::erase(ids_, id);
    owner_.hasDevice_ = !ids_.empty();
  }

  PlaybackStream& owner_;
  pw_registry* registry_;
  spa_hook hook_{};
  std::vector<std::uint32_t> ids_;
};

class PlaybackStream::Stream {
 public:
  explicit Stream(PlaybackStream& owner)
      : owner_{owner},
        stream_{pw_stream_new(owner.connection_->core(), "Vesk", streamProperties())} {
    pw_stream_add_listener(stream_, &hook_, &events(), this);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    spa_hook_remove(&hook_);
    pw_stream_destroy(stream_);
  }

  bool connect() {
    std::array<std::byte, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    spa_audio_info_raw format = stereo();
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    // On the thread that the data goes by, the time of the stream is that of the buffer.
    constexpr auto wanted = PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_INACTIVE |
                            PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS;
    // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): flags are meant to be combined
    constexpr auto flags = static_cast<pw_stream_flags>(wanted);
    return pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &parameter, 1) >= 0;
  }

  void setActive(bool isActive) {
    pw_stream_set_active(stream_, isActive);
    if (!isActive) pw_stream_flush(stream_, false);
  }

 private:
  static const pw_stream_events& events() {
    static const pw_stream_events events{
        .version = PW_VERSION_STREAM_EVENTS,
        .process = [](void* self) { static_cast<Stream*>(self)->process(); }};
    return events;
  }

  void process() {
    pw_buffer* const buffer = pw_stream_dequeue_buffer(stream_);
    if (buffer == nullptr) return;
    const HostTime now = media::monotonicTime();
    const std::span<StereoSample> samples = samplesOf(*buffer);
    const auto heardAt = hearingTime(stream_, now);
    if (heardAt && !samples.empty()) {
      owner_.take_(samples, now, *heardAt);
    } else {
      std::ranges::fill(samples, StereoSample{});
    }
    buffer->size = samples.size();  // what the stream's time counts as queued
    pw_stream_queue_buffer(stream_, buffer);
  }

  /// The part of a buffer that is asked for.
  static std::span<StereoSample> samplesOf(const pw_buffer& buffer) {
    spa_data& data = buffer.buffer->datas[0];
    if (data.data == nullptr) return {};
    const std::size_t room = data.maxsize / sizeof(StereoSample);
    const std::size_t count =
        buffer.requested > 0 ? std::min<std::size_t>(buffer.requested, room) : room;
    data.chunk->offset = 0;
    data.chunk->stride = sizeof(StereoSample);
    data.chunk->size = static_cast<std::uint32_t>(count * sizeof(StereoSample));
    return {static_cast<StereoSample*>(data.data), count};
  }

  PlaybackStream& owner_;
  pw_stream* stream_;
  spa_hook hook_{};
};

PlaybackStream::PlaybackStream(Take take) : take_{std::move(take)} {}

PlaybackStream::~PlaybackStream() {
  // Without its thread everything can be taken down without a lock.
  if (connection_) connection_->stop();
}

std::unique_ptr<PlaybackStream> PlaybackStream::connect(const std::string& remote, Take take) {
  std::unique_ptr<PlaybackStream> playback{new PlaybackStream{std::move(take)}};
  return playback->open(remote) ? std::move(playback) : nullptr;
}

bool PlaybackStream::open(const std::string& remote) {
  connection_ = Connection::open(remote);
  if (!connection_) return false;
  const Connection::Lock lock{*connection_};
  devices_ = std::make_unique<Devices>(*this);
  stream_ = std::make_unique<Stream>(*this);
  return stream_->connect();
}

void PlaybackStream::setActive(bool isActive) {
  const Connection::Lock lock{*connection_};
  stream_->setActive(isActive);
}

}  // namespace vesk::editor::pipewire
