#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "media/pipewire/Connection.h"

namespace vesk::capture::pipewire {

/// A device, or a stream of a program.
struct Node {
  std::uint32_t id = 0;
  std::string serial;       ///< by which streams name it as their target
  std::string name;         ///< the same in every session
  std::string description;  ///< what the user calls it
  std::string mediaClass;   ///< such as "Audio/Source"
  int priority = 0;         ///< the higher the better
  bool operator==(const Node&) const = default;
};

enum class DefaultDevice : std::uint8_t { source, sink };

/// What PipeWire has, as far as it matters here. Kept up to date on the connection's thread, under
/// whose lock it is to be asked.
class Registry {
 public:
  using OnChange = std::function<void()>;

  /// Returns when everything that was there has been learnt, or too slowly to wait for it.
  /// @param onChange is called on the connection's thread after every change that comes later.
  explicit Registry(media::pipewire::Connection& connection, OnChange onChange = {});
  Registry(const Registry&) = delete;
  Registry& operator=(const Registry&) = delete;
  ~Registry();

  /// In the order in which they should be offered to the user.
  [[nodiscard]] std::vector<Node> nodesOf(const std::string& mediaClass) const;
  [[nodiscard]] bool has(std::uint32_t id) const { return nodes_.contains(id); }
  /// The device that a stream without a wish of its own gets.
  [[nodiscard]] std::optional<Node> defaultNode(DefaultDevice device) const;

 private:
  class Listener;

  media::pipewire::Connection& connection_;
  std::map<std::uint32_t, Node> nodes_;
  std::map<DefaultDevice, std::string> defaultNames_;
  std::unique_ptr<Listener> listener_;
};

}  // namespace vesk::capture::pipewire
