#include "capture/pipewire/CameraNode.h"

#include <pipewire/pipewire.h>

#include <utility>

#include "capture/pipewire/VideoFormats.h"

namespace vesk::capture::pipewire {

using media::pipewire::Connection;

class CameraNode::Proxy {
 public:
  Proxy(Connection& connection, std::uint32_t id, PixelSize wanted, OnError onError)
      : wanted_{wanted},
        onError_{std::move(onError)},
        registry_{pw_core_get_registry(connection.core(), PW_VERSION_REGISTRY, 0)},
        node_{static_cast<pw_node*>(
            pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0))} {
    pw_node_add_listener(node_, &hook_, &events(), this);
    pw_node_enum_params(node_, 0, SPA_PARAM_EnumFormat, 0, UINT32_MAX, nullptr);
  }
  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;
  ~Proxy() {
    spa_hook_remove(&hook_);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(node_));
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
  }

  [[nodiscard]] const std::vector<camera::CameraFormat>& formats() const { return formats_; }

 private:
  static const pw_node_events& events() {
    static const pw_node_events events{
        .version = PW_VERSION_NODE_EVENTS,
        .info = [](void* self,
                   const pw_node_info* info) { static_cast<Proxy*>(self)->onInfo(*info); },
        .param =
            [](void* self, int /*sequence*/, std::uint32_t /*id*/, std::uint32_t /*index*/,
               std::uint32_t /*next*/, const spa_pod* description) {
              if (description != nullptr) static_cast<Proxy*>(self)->onFormat(*description);
            }};
    return events;
  }

  /// The first is about the past.
  void onInfo(const pw_node_info& info) {
    const bool isFirst = !std::exchange(isKnown_, true);
    if (isFirst || (info.change_mask & PW_NODE_CHANGE_MASK_STATE) == 0) return;
    if (info.state == PW_NODE_STATE_ERROR) onError_(info.error == nullptr ? "" : info.error);
  }

  void onFormat(const spa_pod& description) {
    for (const auto& format : formatsOffered(description, wanted_)) formats_.push_back(format);
  }

  PixelSize wanted_;
  OnError onError_;
  pw_registry* registry_;
  pw_node* node_;
  spa_hook hook_{};
  bool isKnown_ = false;
  std::vector<camera::CameraFormat> formats_;
};

CameraNode::CameraNode(Connection& connection, std::uint32_t id, PixelSize wanted, OnError onError)
    : connection_{connection},
      proxy_{std::make_unique<Proxy>(connection, id, wanted, std::move(onError))} {}

CameraNode::~CameraNode() = default;

std::vector<camera::CameraFormat> CameraNode::formats() {
  connection_.roundTrip();
  return proxy_->formats();
}

}  // namespace vesk::capture::pipewire
