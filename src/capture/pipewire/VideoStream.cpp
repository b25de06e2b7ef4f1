#include "capture/pipewire/VideoStream.h"

#include <pipewire/pipewire.h>
#include <spa/param/buffers.h>
#include <spa/param/format.h>
#include <spa/pod/builder.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "capture/camera/FrameStamp.h"
#include "capture/camera/UprightPicture.h"
#include "capture/pipewire/LatestBuffer.h"
#include "capture/pipewire/VideoFormats.h"

namespace vesk::capture::pipewire {

using media::pipewire::Connection;
namespace {

using camera::RawPicture;

/// What brings a buffer's picture back upright: the opposite of what was done to it.
camera::Turn turnOf(const spa_buffer& buffer) {
  const auto* meta = static_cast<const spa_meta_videotransform*>(
      spa_buffer_find_meta_data(&buffer, SPA_META_VideoTransform, sizeof(spa_meta_videotransform)));
  if (meta == nullptr || meta->transform > SPA_META_TRANSFORMATION_Flipped270) return {};
  return {.quartersClockwise = static_cast<int>(meta->transform % SPA_META_TRANSFORMATION_Flipped),
          .isMirrored = meta->transform >= SPA_META_TRANSFORMATION_Flipped};
}

const spa_meta_header* headerOf(const spa_buffer& buffer) {
  return static_cast<const spa_meta_header*>(
      spa_buffer_find_meta_data(&buffer, SPA_META_Header, sizeof(spa_meta_header)));
}

bool isDamaged(const spa_buffer& buffer) {
  const spa_meta_header* header = headerOf(buffer);
  return buffer.n_datas == 0 || buffer.datas[0].data == nullptr ||
         (header != nullptr && (header->flags & SPA_META_HEADER_FLAG_CORRUPTED) != 0) ||
         (buffer.datas[0].chunk->flags & SPA_CHUNK_FLAG_CORRUPTED) != 0;
}

media::HostTime stampOf(const spa_buffer& buffer) {
  const media::HostTime arrival = std::chrono::steady_clock::now().time_since_epoch();
  const spa_meta_header* header = headerOf(buffer);
  const bool hasStamp = header != nullptr && header->pts > 0;
  return camera::frameStamp(hasStamp ? std::optional{media::HostTime{header->pts}} : std::nullopt,
                            arrival);
}

std::vector<RawPicture::Piece> piecesOf(const spa_buffer& buffer) {
  std::vector<RawPicture::Piece> pieces;
  for (const spa_data& data : std::span{buffer.datas, buffer.n_datas}) {
    if (data.data == nullptr) break;
    const std::uint32_t offset = std::min(data.chunk->offset, data.maxsize);
    const std::uint32_t size = std::min(data.chunk->size, data.maxsize - offset);
    pieces.push_back({.bytes = {static_cast<const std::uint8_t*>(data.data) + offset, size},
                      .stride = data.chunk->stride});
  }
  return pieces;
}

const spa_pod* metaWanted(spa_pod_builder& builder, std::uint32_t type, std::size_t size) {
  return static_cast<const spa_pod*>(spa_pod_builder_add_object(
      &builder, SPA_TYPE_OBJECT_ParamMeta, SPA_PARAM_Meta, SPA_PARAM_META_type, SPA_POD_Id(type),
      SPA_PARAM_META_size, SPA_POD_Int(static_cast<int>(size))));
}

/// Memory that can be read here, nothing of a graphics card's.
const spa_pod* buffersWanted(spa_pod_builder& builder) {
  constexpr int memory = (1 << SPA_DATA_MemPtr) | (1 << SPA_DATA_MemFd);
  return static_cast<const spa_pod*>(
      spa_pod_builder_add_object(&builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers,
                                 SPA_PARAM_BUFFERS_buffers, SPA_POD_CHOICE_RANGE_Int(4, 2, 8),
                                 SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(memory)));
}

}  // namespace

class VideoStream::Stream {
 public:
  Stream(Connection& connection, Callbacks callbacks)
      : callbacks_{std::move(callbacks)},
        stream_{pw_stream_new(connection.core(), "Vesk",
                              pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY,
                                                "Capture", PW_KEY_MEDIA_ROLE, "Camera", nullptr))} {
    pw_stream_add_listener(stream_, &hook_, &events(), this);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    spa_hook_remove(&hook_);
    pw_stream_destroy(stream_);
  }

  bool connect(const Node& camera, const camera::CameraFormat& format) {
    const std::array target{spa_dict_item{PW_KEY_TARGET_OBJECT, camera.serial.c_str()}};
    const spa_dict properties{.flags = 0, .n_items = target.size(), .items = target.data()};
    pw_stream_update_properties(stream_, &properties);
    std::array<std::byte, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    const spa_pod* description = describe(format, builder);
    // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): flags are meant to be combined
    constexpr auto flags = static_cast<pw_stream_flags>(
        PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_DONT_RECONNECT);
    return pw_stream_connect(stream_, PW_DIRECTION_INPUT, PW_ID_ANY, flags, &description, 1) >= 0;
  }

  [[nodiscard]] std::uint32_t nodeId() const { return pw_stream_get_node_id(stream_); }

 private:
  static const pw_stream_events& events() {
    static const pw_stream_events events{
        .version = PW_VERSION_STREAM_EVENTS,
        .state_changed =
            [](void* self, pw_stream_state before, pw_stream_state now, const char* error) {
              static_cast<Stream*>(self)->onState(before, now, error);
            },
        .param_changed =
            [](void* self, std::uint32_t id, const spa_pod* parameter) {
              if (id != SPA_PARAM_Format || parameter == nullptr) return;
              static_cast<Stream*>(self)->onFormat(*parameter);
            },
        .process = [](void* self) { static_cast<Stream*>(self)->process(); }};
    return events;
  }

  void onState(pw_stream_state before, pw_stream_state now, const char* error) {
    const bool isCutOff = now == PW_STREAM_STATE_UNCONNECTED && before >= PW_STREAM_STATE_PAUSED;
    if (now == PW_STREAM_STATE_ERROR || isCutOff) callbacks_.onError(error == nullptr ? "" : error);
  }

  void onFormat(const spa_pod& description) {
    format_ = formatAgreed(description);
    std::array<std::byte, 1024> memory{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory.data(), memory.size());
    std::array parameters{
        buffersWanted(builder), metaWanted(builder, SPA_META_Header, sizeof(spa_meta_header)),
        metaWanted(builder, SPA_META_VideoTransform, sizeof(spa_meta_videotransform))};
    pw_stream_update_params(stream_, parameters.data(), parameters.size());
  }

  void process() {
    deliverLatest(stream_, [this](const spa_buffer& buffer) { deliver(buffer); });
  }

  void deliver(const spa_buffer& buffer) {
    if (!format_ || isDamaged(buffer)) return;
    const auto pieces = piecesOf(buffer);
    const auto pixels = picture_.convert(
        {.layout = format_->layout, .size = format_->size, .pieces = pieces}, turnOf(buffer));
    if (pixels) callbacks_.onFrame({.stamp = stampOf(buffer), .pixels = *pixels});
  }

  Callbacks callbacks_;
  pw_stream* stream_;
  spa_hook hook_{};
  std::optional<camera::CameraFormat> format_;
  camera::UprightPicture picture_;
};

VideoStream::VideoStream(Connection& connection, Callbacks callbacks)
    : stream_{std::make_unique<Stream>(connection, std::move(callbacks))} {}

VideoStream::~VideoStream() = default;

bool VideoStream::connect(const Node& camera, const camera::CameraFormat& format) {
  return stream_->connect(camera, format);
}

std::uint32_t VideoStream::nodeId() const {
  return stream_->nodeId();
}

}  // namespace vesk::capture::pipewire
