#include "capture/pipewire/Registry.h"

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace vesk::capture::pipewire {

using media::pipewire::Connection;
namespace {

std::string textIn(const spa_dict& properties, const char* key) {
  const char* const text = spa_dict_lookup(&properties, key);
  return text == nullptr ? std::string{} : std::string{text};
}

std::string firstText(const spa_dict& properties, std::initializer_list<const char*> keys) {
  for (const char* key : keys) {
    if (auto text = textIn(properties, key); !text.empty()) return text;
  }
  return {};
}

Node nodeOf(std::uint32_t id, const spa_dict& properties) {
  return {.id = id,
          .serial = textIn(properties, PW_KEY_OBJECT_SERIAL),
          .name = textIn(properties, PW_KEY_NODE_NAME),
          .description =
              firstText(properties, {PW_KEY_NODE_DESCRIPTION, PW_KEY_NODE_NICK, PW_KEY_NODE_NAME}),
          .mediaClass = textIn(properties, PW_KEY_MEDIA_CLASS),
          .priority = std::atoi(textIn(properties, PW_KEY_PRIORITY_SESSION).c_str())};
}

std::optional<DefaultDevice> deviceOfKey(std::string_view key) {
  if (key == "default.audio.source") return DefaultDevice::source;
  if (key == "default.audio.sink") return DefaultDevice::sink;
  return std::nullopt;
}

/// The name in a value such as {"name":"alsa_input.usb"}; empty when there is none.
std::string nameInValue(const char* value) {
  if (value == nullptr) return {};
  const auto json = nlohmann::json::parse(value, nullptr, false);
  if (!json.is_object()) return {};
  const auto name = json.find("name");
  return name != json.end() && name->is_string() ? name->get<std::string>() : std::string{};
}

bool isOf(DefaultDevice device, std::string_view mediaClass) {
  return mediaClass.starts_with(device == DefaultDevice::source ? "Audio/Source" : "Audio/Sink") ||
         mediaClass.starts_with("Audio/Duplex");
}

}  // namespace

class Registry::Listener {
 public:
  Listener(Registry& registry, Connection& connection, OnChange onChange)
      : registry_{registry},
        onChange_{std::move(onChange)},
        proxy_{pw_core_get_registry(connection.core(), PW_VERSION_REGISTRY, 0)} {
    pw_registry_add_listener(proxy_, &hook_, &registryEvents(), this);
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() {
    forgetMetadata();
    spa_hook_remove(&hook_);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(proxy_));
  }

 private:
  static const pw_registry_events& registryEvents() {
    static const pw_registry_events events{
        .version = PW_VERSION_REGISTRY_EVENTS,
        .global =
            [](void* self, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
               std::uint32_t /*version*/, const spa_dict* properties) {
              if (properties == nullptr) return;
              static_cast<Listener*>(self)->onGlobal(id, type, *properties);
            },
        .global_remove = [](void* self,
                            std::uint32_t id) { static_cast<Listener*>(self)->onRemoved(id); }};
    return events;
  }

  static const pw_metadata_events& metadataEvents() {
    static const pw_metadata_events events{
        .version = PW_VERSION_METADATA_EVENTS,
        .property = [](void* self, std::uint32_t /*subject*/, const char* key, const char* /*type*/,
                       const char* value) {
          static_cast<Listener*>(self)->onDefault(key, value);
          return 0;
        }};
    return events;
  }

  void onGlobal(std::uint32_t id, std::string_view type, const spa_dict& properties) {
    if (type == PW_TYPE_INTERFACE_Node) {
      registry_.nodes_[id] = nodeOf(id, properties);
      tellChange();
    } else if (type == PW_TYPE_INTERFACE_Metadata && metadata_ == nullptr &&
               textIn(properties, PW_KEY_METADATA_NAME) == "default") {
      metadataId_ = id;
      metadata_ = static_cast<pw_metadata*>(
          pw_registry_bind(proxy_, id, PW_TYPE_INTERFACE_Metadata, PW_VERSION_METADATA, 0));
      if (metadata_ != nullptr) {
        pw_metadata_add_listener(metadata_, &metadataHook_, &metadataEvents(), this);
      }
    }
  }

  void onRemoved(std::uint32_t id) {
    if (metadata_ != nullptr && id == metadataId_) forgetMetadata();
    if (registry_.nodes_.erase(id) > 0) tellChange();
  }

  /// A null key stands for all of them.
  void onDefault(const char* key, const char* value) {
    if (key == nullptr) {
      registry_.defaultNames_.clear();
    } else if (const auto device = deviceOfKey(key)) {
      registry_.defaultNames_[*device] = nameInValue(value);
    } else {
      return;
    }
    tellChange();
  }

  void forgetMetadata() {
    if (metadata_ == nullptr) return;
    spa_hook_remove(&metadataHook_);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(std::exchange(metadata_, nullptr)));
  }

  void tellChange() {
    if (onChange_) onChange_();
  }

  Registry& registry_;
  OnChange onChange_;
  pw_registry* proxy_;
  spa_hook hook_{};
  pw_metadata* metadata_ = nullptr;
  std::uint32_t metadataId_ = 0;
  spa_hook metadataHook_{};
};

Registry::Registry(Connection& connection, OnChange onChange) : connection_{connection} {
  const Connection::Lock lock{connection};
  listener_ = std::make_unique<Listener>(*this, connection, std::move(onChange));
  connection.roundTrip();  // the globals
  connection.roundTrip();  // what was bound because of them
}

Registry::~Registry() {
  const Connection::Lock lock{connection_};
  listener_.reset();
}

std::vector<Node> Registry::nodesOf(const std::string& mediaClass) const {
  std::vector<Node> found;
  for (const auto& [id, node] : nodes_) {
    if (node.mediaClass == mediaClass) found.push_back(node);
  }
  std::ranges::stable_sort(found, std::ranges::greater{}, &Node::priority);
  return found;
}

std::optional<Node> Registry::defaultNode(DefaultDevice device) const {
  const auto name = defaultNames_.find(device);
  if (name == defaultNames_.end()) return std::nullopt;
  const auto node = std::ranges::find_if(nodes_, [&](const auto& entry) {
    return entry.second.name == name->second && isOf(device, entry.second.mediaClass);
  });
  return node == nodes_.end() ? std::nullopt : std::optional{node->second};
}

}  // namespace vesk::capture::pipewire
