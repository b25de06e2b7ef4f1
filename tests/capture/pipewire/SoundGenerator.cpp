#include "capture/pipewire/SoundGenerator.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <span>
#include <stdexcept>
#include <utility>

#include "media/StereoSample.h"

namespace vesk::capture::pipewire::test {

using media::pipewire::Connection;
namespace {

constexpr std::int64_t nanosecondsASecond = 1'000'000'000;

std::unique_ptr<Connection> connect(const std::string& remote) {
  auto connection = Connection::openAnswered(remote);
  if (!connection) throw std::runtime_error("no sound server");
  return connection;
}

}  // namespace

Waveform tone(double frequency) {
  return [frequency](media::HostTime time) {
    const double turns =
        std::fmod(media::secondsOf(time % std::chrono::seconds{1}) * frequency, 1.0);
    return static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * turns));
  };
}

Waveform secondRamp() {
  return [](media::HostTime time) {
    return static_cast<float>(media::secondsOf(time % std::chrono::seconds{1}));
  };
}

Waveform beeps(double frequency, Moments moments) {
  return [wave = tone(frequency), moments = std::move(moments)](media::HostTime time) {
    return moments(time) ? wave(time) : 0.0F;
  };
}

class SoundGenerator::Stream {
 public:
  Stream(Connection& connection, pw_properties* properties, Waveform waveform)
      : waveform_{std::move(waveform)},
        stream_{pw_stream_new(connection.core(), "generator", properties)} {
    pw_stream_add_listener(stream_, &hook_, &events(), this);
    std::array<std::byte, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    spa_audio_info_raw format{};
    format.format = SPA_AUDIO_FORMAT_F32;
    format.rate = media::soundRate;
    format.channels = 1;
    format.position[0] = SPA_AUDIO_CHANNEL_MONO;
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    constexpr auto flags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
    if (pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, &parameter, 1) < 0) {
      throw std::runtime_error("no stream");
    }
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    spa_hook_remove(&hook_);
    pw_stream_destroy(stream_);
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
    pw_time time{};
    pw_stream_get_time_n(stream_, &time, sizeof time);
    // A player's samples are heard when they have passed the graph.
    const std::int64_t first =
        time.rate.denom == 0
            ? time.now
            : time.now + time.delay * time.rate.num * nanosecondsASecond / time.rate.denom;
    spa_data& data = buffer->buffer->datas[0];
    const std::size_t room = data.maxsize / sizeof(float);
    const std::size_t count =
        buffer->requested > 0 ? std::min<std::size_t>(buffer->requested, room) : room;
    const std::span<float> samples{static_cast<float*>(data.data), count};
    for (std::size_t index = 0; index < count; ++index) {
      samples[index] = waveform_(media::HostTime{
          first + static_cast<std::int64_t>(index) * nanosecondsASecond / media::soundRate});
    }
    data.chunk->offset = 0;
    data.chunk->stride = sizeof(float);
    data.chunk->size = static_cast<std::uint32_t>(count * sizeof(float));
    pw_stream_queue_buffer(stream_, buffer);
  }

  Waveform waveform_;
  pw_stream* stream_;
  spa_hook hook_{};
};

SoundGenerator::SoundGenerator(const std::string& remote, const Microphone& microphone,
                               Waveform waveform)
    : connection_{connect(remote)} {
  const Connection::Lock lock{*connection_};
  stream_ = std::make_unique<Stream>(
      *connection_,
      pw_properties_new(PW_KEY_MEDIA_CLASS, "Audio/Source", PW_KEY_NODE_NAME,
                        microphone.name.c_str(), PW_KEY_NODE_DESCRIPTION,
                        microphone.description.c_str(), PW_KEY_NODE_LATENCY, "1024/48000", nullptr),
      std::move(waveform));
}

SoundGenerator::SoundGenerator(const std::string& remote, const Player& player, Waveform waveform)
    : connection_{connect(remote)} {
  const Connection::Lock lock{*connection_};
  pw_properties* properties =
      pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Playback",
                        PW_KEY_NODE_LATENCY, "1024/48000", nullptr);
  if (!player.sinkName.empty()) {
    pw_properties_set(properties, PW_KEY_TARGET_OBJECT, player.sinkName.c_str());
    // Without this, one that plays to the default sink would follow it.
    pw_properties_set(properties, PW_KEY_NODE_DONT_RECONNECT, "true");
  }
  stream_ = std::make_unique<Stream>(*connection_, properties, std::move(waveform));
}

SoundGenerator::~SoundGenerator() {
  connection_->stop();
}

}  // namespace vesk::capture::pipewire::test
