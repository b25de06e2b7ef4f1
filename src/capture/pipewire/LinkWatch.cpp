#include "capture/pipewire/LinkWatch.h"

#include <pipewire/pipewire.h>

#include <map>
#include <string_view>
#include <utility>

namespace vesk::capture::pipewire {

using media::pipewire::Connection;
namespace {

/// A link into whichever node.
class Link {
 public:
  Link(pw_registry* registry, std::uint32_t id, const LinkWatch::Callbacks& callbacks)
      : callbacks_{callbacks},
        link_{static_cast<pw_link*>(
            pw_registry_bind(registry, id, PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, 0))} {
    pw_link_add_listener(link_, &hook_, &events(), this);
  }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  ~Link() {
    spa_hook_remove(&hook_);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(link_));
  }

 private:
  static const pw_link_events& events() {
    static const pw_link_events events{.version = PW_VERSION_LINK_EVENTS,
                                       .info = [](void* self, const pw_link_info* info) {
                                         static_cast<const Link*>(self)->onInfo(*info);
                                       }};
    return events;
  }

  void onInfo(const pw_link_info& info) const {
    if (info.state != PW_LINK_STATE_ERROR) return;
    if (info.input_node_id != callbacks_.streamNode()) return;
    callbacks_.onError(info.error == nullptr ? "" : info.error);
  }

  const LinkWatch::Callbacks& callbacks_;
  pw_link* link_;
  spa_hook hook_{};
};

}  // namespace

class LinkWatch::Links {
 public:
  Links(Connection& connection, Callbacks callbacks)
      : callbacks_{std::move(callbacks)},
        registry_{pw_core_get_registry(connection.core(), PW_VERSION_REGISTRY, 0)} {
    pw_registry_add_listener(registry_, &hook_, &events(), this);
  }
  Links(const Links&) = delete;
  Links& operator=(const Links&) = delete;
  ~Links() {
    links_.clear();
    spa_hook_remove(&hook_);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
  }

 private:
  static const pw_registry_events& events() {
    static const pw_registry_events events{
        .version = PW_VERSION_REGISTRY_EVENTS,
        .global =
            [](void* self, std::uint32_t id, std::uint32_t /*permissions*/, const char* type,
               std::uint32_t /*version*/, const spa_dict* /*properties*/) {
              if (std::string_view{type} != PW_TYPE_INTERFACE_Link) return;
              auto& links = *static_cast<Links*>(self);
              links.links_.try_emplace(id, links.registry_, id, links.callbacks_);
            },
        .global_remove = [](void* self,
                            std::uint32_t id) { static_cast<Links*>(self)->links_.erase(id); }};
    return events;
  }

  Callbacks callbacks_;
  pw_registry* registry_;
  spa_hook hook_{};
  std::map<std::uint32_t, Link> links_;
};

LinkWatch::LinkWatch(Connection& connection, Callbacks callbacks)
    : links_{std::make_unique<Links>(connection, std::move(callbacks))} {}

LinkWatch::~LinkWatch() = default;

}  // namespace vesk::capture::pipewire
