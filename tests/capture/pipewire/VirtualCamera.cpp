#include "capture/pipewire/VirtualCamera.h"

#include <fmt/format.h>
#include <pipewire/pipewire.h>
#include <spa/param/buffers.h>
#include <spa/param/format.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "capture/pipewire/VideoFormats.h"

namespace vesk::capture::pipewire::test {

using media::pipewire::Connection;
namespace {

std::unique_ptr<Connection> connect(const std::string& remote) {
  auto connection = Connection::openAnswered(remote);
  if (!connection) throw std::runtime_error("no sound server");
  return connection;
}

/// Of a compressed frame, as much as it may have.
std::size_t frameBytes(const camera::CameraFormat& format) {
  const auto pixels =
      static_cast<std::size_t>(format.size.width) * static_cast<std::size_t>(format.size.height);
  return (format.layout == camera::PixelLayout::bgrx ? 4 : 2) * pixels;
}

int strideOf(const camera::CameraFormat& format) {
  if (format.layout == camera::PixelLayout::mjpeg) return 0;
  return (format.layout == camera::PixelLayout::bgrx ? 4 : 2) * format.size.width;
}

}  // namespace

class VirtualCamera::Stream {
 public:
  Stream(Connection& connection, const Options& options, Paint paint)
      : options_{options},
        paint_{std::move(paint)},
        loop_{pw_thread_loop_get_loop(connection.loop())},
        stream_{pw_stream_new(
            connection.core(), "camera",
            pw_properties_new(PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_NODE_NAME,
                              options.name.c_str(), PW_KEY_NODE_DESCRIPTION,
                              options.description.c_str(), PW_KEY_PRIORITY_SESSION,
                              fmt::format("{}", options.priority).c_str(), nullptr))} {
    pw_stream_add_listener(stream_, &hook_, &events(), this);
    timer_ = pw_loop_add_timer(
        loop_,
        [](void* self, std::uint64_t /*expirations*/) {
          pw_stream_trigger_process(static_cast<Stream*>(self)->stream_);
        },
        this);
    std::array<std::byte, 4096> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    std::vector<const spa_pod*> descriptions;
    for (const PixelSize& size : options.sizes) {
      descriptions.push_back(
          describe({.layout = options.layout,
                    .size = size,
                    .framesPerSecond = static_cast<double>(options.framesPerSecond)},
                   builder));
    }
    constexpr auto flags =
        static_cast<pw_stream_flags>(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS);
    if (pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY, flags, descriptions.data(),
                          static_cast<std::uint32_t>(descriptions.size())) < 0) {
      throw std::runtime_error("no virtual camera");
    }
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    pw_loop_destroy_source(loop_, timer_);
    spa_hook_remove(&hook_);
    pw_stream_destroy(stream_);
  }

 private:
  static const pw_stream_events& events() {
    static const pw_stream_events events{
        .version = PW_VERSION_STREAM_EVENTS,
        .state_changed = [](void* self, pw_stream_state /*before*/, pw_stream_state now,
                            const char* /*error*/) { static_cast<Stream*>(self)->onState(now); },
        .param_changed =
            [](void* self, std::uint32_t id, const spa_pod* parameter) {
              if (id != SPA_PARAM_Format || parameter == nullptr) return;
              static_cast<Stream*>(self)->onFormat(*parameter);
            },
        .process = [](void* self) { static_cast<Stream*>(self)->process(); }};
    return events;
  }

  void onState(pw_stream_state now) {
    const bool runs = now == PW_STREAM_STATE_STREAMING;
    const auto period =
        std::chrono::nanoseconds{std::chrono::seconds{1}} / options_.framesPerSecond;
    timespec first{.tv_sec = 0, .tv_nsec = runs ? 1 : 0};
    timespec interval{.tv_sec = 0, .tv_nsec = runs ? period.count() : 0};
    pw_loop_update_timer(loop_, timer_, &first, &interval, false);
  }

  void onFormat(const spa_pod& description) {
    format_ = formatAgreed(description).value();
    std::array<std::byte, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    // Who reads frames does not read them from a graphics card's memory.
    const int kinds = 1 << (options_.isBroken ? SPA_DATA_DmaBuf : SPA_DATA_MemPtr);
    std::vector<const spa_pod*> parameters{
        static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
            SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1),
            SPA_PARAM_BUFFERS_size, SPA_POD_Int(static_cast<int>(frameBytes(format_))),
            SPA_PARAM_BUFFERS_stride, SPA_POD_Int(strideOf(format_)), SPA_PARAM_BUFFERS_dataType,
            SPA_POD_CHOICE_FLAGS_Int(kinds))),
        static_cast<const spa_pod*>(spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
            SPA_POD_Id(SPA_META_VideoTransform), SPA_PARAM_META_size,
            SPA_POD_Int(sizeof(spa_meta_videotransform))))};
    if (options_.hasStamps) {
      parameters.push_back(static_cast<const spa_pod*>(spa_pod_builder_add_object(
          &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type,
          SPA_POD_Id(SPA_META_Header), SPA_PARAM_META_size, SPA_POD_Int(sizeof(spa_meta_header)))));
    }
    pw_stream_update_params(stream_, parameters.data(),
                            static_cast<std::uint32_t>(parameters.size()));
  }

  void process() {
    pw_buffer* const buffer = pw_stream_dequeue_buffer(stream_);
    if (buffer == nullptr) return;
    const media::HostTime taken = std::chrono::steady_clock::now().time_since_epoch();
    const spa_data& data = buffer->buffer->datas[0];
    const std::size_t size = std::min<std::size_t>(data.maxsize, frameBytes(format_));
    paint_({static_cast<std::uint8_t*>(data.data), size}, taken);
    data.chunk->offset = 0;
    data.chunk->size = static_cast<std::uint32_t>(size);
    data.chunk->stride = strideOf(format_);
    if (auto* header = static_cast<spa_meta_header*>(
            spa_buffer_find_meta_data(buffer->buffer, SPA_META_Header, sizeof(spa_meta_header)))) {
      header->pts = taken.count();
      header->flags = 0;
      header->seq = count_++;
      header->dts_offset = 0;
    }
    if (auto* transform = static_cast<spa_meta_videotransform*>(spa_buffer_find_meta_data(
            buffer->buffer, SPA_META_VideoTransform, sizeof(spa_meta_videotransform)))) {
      transform->transform = options_.turned;
    }
    pw_stream_queue_buffer(stream_, buffer);
  }

  Options options_;
  Paint paint_;
  pw_loop* loop_;
  pw_stream* stream_;
  spa_hook hook_{};
  spa_source* timer_ = nullptr;
  camera::CameraFormat format_;
  std::uint64_t count_ = 0;
};

VirtualCamera::VirtualCamera(const std::string& remote, const Options& options, Paint paint)
    : connection_{connect(remote)} {
  const Connection::Lock lock{*connection_};
  stream_ = std::make_unique<Stream>(*connection_, options, std::move(paint));
}

VirtualCamera::~VirtualCamera() {
  connection_->stop();
}

VirtualCamera::Paint flashes(Moments moments) {
  return [moments = std::move(moments)](std::span<std::uint8_t> bytes, media::HostTime taken) {
    std::ranges::fill(bytes, moments(taken) ? 255 : 0);
  };
}

}  // namespace vesk::capture::pipewire::test
