#include "capture/pipewire/VirtualSink.h"

#include <pipewire/pipewire.h>

#include <stdexcept>

namespace vesk::capture::pipewire::test {

using media::pipewire::Connection;

VirtualSink::VirtualSink(const std::string& remote, const std::string& name,
                         const std::string& description) {
  connection_ = Connection::openAnswered(remote);
  if (!connection_) throw std::runtime_error("no sound server");
  const Connection::Lock lock{*connection_};
  pw_properties* properties = pw_properties_new(
      PW_KEY_FACTORY_NAME, "support.null-audio-sink", PW_KEY_NODE_NAME, name.c_str(),
      PW_KEY_NODE_DESCRIPTION, description.c_str(), PW_KEY_MEDIA_CLASS, "Audio/Sink",
      "audio.position", "FL,FR", "monitor.channel-volumes", "true", nullptr);
  proxy_ = static_cast<pw_proxy*>(pw_core_create_object(connection_->core(), "adapter",
                                                        PW_TYPE_INTERFACE_Node, PW_VERSION_NODE,
                                                        &properties->dict, 0));
  pw_properties_free(properties);
  if (proxy_ == nullptr || !connection_->roundTrip()) throw std::runtime_error("no virtual sink");
}

VirtualSink::~VirtualSink() {
  connection_->stop();
  pw_proxy_destroy(proxy_);
}

}  // namespace vesk::capture::pipewire::test
