#pragma once

#include <memory>
#include <string>

#include "media/pipewire/Connection.h"

struct pw_proxy;

namespace vesk::capture::pipewire::test {

/// A sound output device of two channels that nobody hears. It goes with the object.
class VirtualSink {
 public:
  /// Returns when it is there.
  VirtualSink(const std::string& remote, const std::string& name, const std::string& description);
  VirtualSink(const VirtualSink&) = delete;
  VirtualSink& operator=(const VirtualSink&) = delete;
  ~VirtualSink();

 private:
  std::unique_ptr<media::pipewire::Connection> connection_;
  pw_proxy* proxy_ = nullptr;
};

}  // namespace vesk::capture::pipewire::test
