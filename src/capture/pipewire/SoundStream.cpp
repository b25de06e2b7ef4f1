#include "capture/pipewire/SoundStream.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>

#include <algorithm>
#include <array>
#include <utility>

#include "capture/pipewire/LatestBuffer.h"
#include "capture/pipewire/TickCount.h"
#include "media/StereoSample.h"

namespace vesk::capture::pipewire {

using media::pipewire::Connection;
namespace {

// In place of a device that goes, the session manager finds another within this time or never.
constexpr timespec graceWithoutDevice{.tv_sec = 1, .tv_nsec = 0};

BackendError noDevice(DefaultDevice device) {
  return {device == DefaultDevice::source ? "找不到可用的麦克风" : "找不到可用的声音输出设备"};
}

BackendError deviceGone(DefaultDevice device) {
  return {device == DefaultDevice::source ? "麦克风已断开" : "声音输出设备已断开"};
}

BackendError serverGone() {
  return {"与 PipeWire 服务的连接已断开"};
}

pw_properties* streamProperties(DefaultDevice device) {
  pw_properties* properties = pw_properties_new(PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY,
                                                "Capture", PW_KEY_MEDIA_ROLE, "Production",
                                                PW_KEY_NODE_LATENCY, "1024/48000", nullptr);
  if (device == DefaultDevice::sink) {
    pw_properties_set(properties, PW_KEY_STREAM_CAPTURE_SINK, "true");
  }
  return properties;
}

spa_audio_info_raw formatOf(int channels) {
  spa_audio_info_raw format{};
  format.format = SPA_AUDIO_FORMAT_F32;
  format.rate = media::soundRate;
  format.channels = static_cast<std::uint32_t>(channels);
  if (channels == 1) {
    format.position[0] = SPA_AUDIO_CHANNEL_MONO;
  } else {
    format.position[0] = SPA_AUDIO_CHANNEL_FL;
    format.position[1] = SPA_AUDIO_CHANNEL_FR;
  }
  return format;
}

std::span<const float> samplesIn(const spa_buffer& buffer, int channels) {
  if (buffer.n_datas == 0 || buffer.datas[0].data == nullptr) return {};
  const spa_data& data = buffer.datas[0];
  const std::uint32_t offset = std::min(data.chunk->offset, data.maxsize);
  const std::uint32_t size = std::min(data.chunk->size, data.maxsize - offset);
  const std::size_t frames = size / (sizeof(float) * static_cast<std::size_t>(channels));
  const auto* bytes = static_cast<const std::byte*>(data.data) + offset;
  return {reinterpret_cast<const float*>(bytes), frames * static_cast<std::size_t>(channels)};
}

/// When the first sample of the buffer at hand reached the device, or left for it.
media::HostTime stampOf(const pw_time& time) {
  const double delay = static_cast<double>(time.delay) * time.rate.num / time.rate.denom +
                       static_cast<double>(time.buffered) / media::soundRate;
  return media::HostTime{time.now - static_cast<std::int64_t>(delay * 1e9)};
}

}  // namespace

class SoundStream::Stream {
 public:
  Stream(SoundStream& owner, const SoundStreamRequest& request)
      : owner_{owner},
        channels_{request.channels},
        stream_{
            pw_stream_new(owner.connection_->core(), "Vesk", streamProperties(request.device))} {
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
    spa_audio_info_raw format = formatOf(channels_);
    const spa_pod* parameter = spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &format);
    // The process callback comes on the thread that the data comes on: there alone the time of the
    // stream is that of the buffer.
    // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): flags are meant to be combined
    constexpr auto flags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS);
    return pw_stream_connect(stream_, PW_DIRECTION_INPUT, PW_ID_ANY, flags, &parameter, 1) >= 0;
  }

 private:
  static const pw_stream_events& events() {
    static const pw_stream_events events{
        .version = PW_VERSION_STREAM_EVENTS,
        .state_changed =
            [](void* self, pw_stream_state before, pw_stream_state now, const char* /*error*/) {
              static_cast<Stream*>(self)->onState(before, now);
            },
        .process = [](void* self) { static_cast<Stream*>(self)->process(); }};
    return events;
  }

  void onState(pw_stream_state before, pw_stream_state now) {
    const bool wasConnected = before >= PW_STREAM_STATE_PAUSED;
    if (now == PW_STREAM_STATE_ERROR || (now == PW_STREAM_STATE_UNCONNECTED && wasConnected)) {
      owner_.gate_.end({"PipeWire 中断了声音"});
    }
  }

  void process() {
    deliverLatest(stream_, [this](const spa_buffer& buffer) { deliver(buffer); });
  }

  void deliver(const spa_buffer& buffer) {
    const std::span<const float> samples = samplesIn(buffer, channels_);
    pw_time time{};
    if (samples.empty() || pw_stream_get_time_n(stream_, &time, sizeof time) < 0) return;
    if (time.now == 0 || time.rate.num == 0 || time.rate.denom == 0) return;
    const TickCount::Block block{.ticks = static_cast<std::int64_t>(time.ticks),
                                 .tickRate = time.rate.denom / time.rate.num,
                                 .samples = std::ssize(samples) / channels_};
    const media::SoundBlock sound{
        .stamp = stampOf(time), .position = ticks_.positionOf(block), .samples = samples};
    owner_.gate_.pass([&] { owner_.onBlock_(sound); });
  }

  SoundStream& owner_;
  int channels_;
  pw_stream* stream_;
  spa_hook hook_{};
  TickCount ticks_;
};

/// Tells when there has been no device for too long.
class SoundStream::DeviceWatch {
 public:
  explicit DeviceWatch(SoundStream& owner)
      : owner_{owner}, loop_{pw_thread_loop_get_loop(owner.connection_->loop())} {
    timer_ = pw_loop_add_timer(
        loop_,
        [](void* self, std::uint64_t /*expirations*/) {
          SoundStream& sound = static_cast<DeviceWatch*>(self)->owner_;
          sound.gate_.end(deviceGone(sound.request_.device));
        },
        this);
  }
  DeviceWatch(const DeviceWatch&) = delete;
  DeviceWatch& operator=(const DeviceWatch&) = delete;
  ~DeviceWatch() { pw_loop_destroy_source(loop_, timer_); }

  void setHasDevice(bool hasDevice) {
    if (std::exchange(hasDevice_, hasDevice) == hasDevice) return;
    timespec after = hasDevice ? timespec{} : graceWithoutDevice;  // zero disarms
    pw_loop_update_timer(loop_, timer_, &after, nullptr, false);
  }

 private:
  SoundStream& owner_;
  pw_loop* loop_;
  spa_source* timer_;
  bool hasDevice_ = true;
};

SoundStream::SoundStream(SoundStreamRequest request, SoundSource::OnBlock onBlock,
                         SoundSource::OnEnd onEnd)
    : request_{std::move(request)}, onBlock_{std::move(onBlock)}, gate_{std::move(onEnd)} {}

SoundStream::~SoundStream() {
  gate_.close();  // what still waits to be delivered must not hold up the rest
  if (connection_) connection_->stop();
}

std::expected<std::unique_ptr<Listening>, BackendError> SoundStream::open(
    const SoundStreamRequest& request, SoundSource::OnBlock onBlock, SoundSource::OnEnd onEnd) {
  std::unique_ptr<SoundStream> sound{
      new SoundStream{request, std::move(onBlock), std::move(onEnd)}};
  if (auto started = sound->start(); !started) return std::unexpected(started.error());
  if (!sound->gate_.open()) return std::unexpected(serverGone());
  return sound;
}

std::expected<void, BackendError> SoundStream::start() {
  connection_ = Connection::openAnswered(request_.remote, [this] { gate_.end(serverGone()); });
  if (!connection_) return std::unexpected(BackendError{"连接不上 PipeWire 服务"});
  registry_ = std::make_unique<Registry>(*connection_, [this] { onRegistryChange(); });

  const Connection::Lock lock{*connection_};
  if (!registry_->defaultNode(request_.device)) return std::unexpected(noDevice(request_.device));
  watch_ = std::make_unique<DeviceWatch>(*this);
  stream_ = std::make_unique<Stream>(*this, request_);
  if (!stream_->connect()) return std::unexpected(BackendError{"PipeWire 拒绝了录音"});
  return {};
}

void SoundStream::onRegistryChange() {
  if (watch_) watch_->setHasDevice(registry_->defaultNode(request_.device).has_value());
}

std::optional<std::string> defaultDeviceName(DefaultDevice device, const std::string& remote) {
  const auto connection = Connection::openAnswered(remote);
  if (!connection) return std::nullopt;
  const Registry registry{*connection};
  const Connection::Lock lock{*connection};
  const auto node = registry.defaultNode(device);
  return node ? std::optional{node->description} : std::nullopt;
}

}  // namespace vesk::capture::pipewire
