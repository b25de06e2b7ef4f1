#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "media/pipewire/Connection.h"

namespace vesk::capture::pipewire {

/// Hears of the failure of a link between a device and a stream, of which neither of them is told:
/// such as of a device that refuses the format. To be used under the connection's lock.
class LinkWatch {
 public:
  struct Callbacks {
    /// The node that the stream has become.
    std::function<std::uint32_t()> streamNode;
    /// In the words of the server or the driver; on the connection's thread.
    std::function<void(const std::string& error)> onError;
  };

  LinkWatch(media::pipewire::Connection& connection, Callbacks callbacks);
  LinkWatch(const LinkWatch&) = delete;
  LinkWatch& operator=(const LinkWatch&) = delete;
  ~LinkWatch();

 private:
  class Links;
  std::unique_ptr<Links> links_;
};

}  // namespace vesk::capture::pipewire
