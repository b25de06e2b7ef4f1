#include "capture/x11/WindowTree.h"

#include <unistd.h>
#include <xcb/res.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstddef>
#include <span>

namespace vesk::capture::x11 {
namespace {

Reply<xcb_query_tree_reply_t> tree(const Connection& connection, std::uint32_t window) {
  return owned(
      xcb_query_tree_reply(connection.get(), xcb_query_tree(connection.get(), window), nullptr));
}

std::optional<std::int32_t> processByServer(const Connection& connection, std::uint32_t resource) {
  const auto* const extension = xcb_get_extension_data(connection.get(), &xcb_res_id);
  if (!extension || extension->present == 0) return std::nullopt;
  const xcb_res_client_id_spec_t question{.client = resource,
                                          .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
  const auto reply = owned(xcb_res_query_client_ids_reply(
      connection.get(), xcb_res_query_client_ids(connection.get(), 1, &question), nullptr));
  if (!reply) return std::nullopt;
  const auto ids = xcb_res_query_client_ids_ids_iterator(reply.get());
  if (ids.rem == 0 || xcb_res_client_id_value_value_length(ids.data) < 1) return std::nullopt;
  return static_cast<std::int32_t>(*xcb_res_client_id_value_value(ids.data));
}

/// A window and what is inside it as deep as an application's window may lie; the outer ones first.
std::vector<std::uint32_t> withDescendants(const Connection& connection, std::uint32_t window) {
  std::vector<std::uint32_t> all{window};
  std::size_t levelBegin = 0;
  for (int depth = 0; depth < deepestFrame; ++depth) {
    const std::size_t levelEnd = all.size();
    for (std::size_t i = levelBegin; i < levelEnd; ++i) {
      const auto children = childrenOf(connection, all[i]);
      all.insert(all.end(), children.begin(), children.end());
    }
    levelBegin = levelEnd;
  }
  return all;
}

std::optional<std::uint32_t> managedAmong(const Connection& connection,
                                          const std::vector<std::uint32_t>& windows) {
  const std::uint32_t mark = connection.atom("WM_STATE");
  const auto found = std::ranges::find_if(
      windows, [&](std::uint32_t window) { return connection.property(window, mark).has_value(); });
  if (found == windows.end()) return std::nullopt;
  return *found;
}

}  // namespace

std::vector<std::uint32_t> childrenOf(const Connection& connection, std::uint32_t window) {
  const auto reply = tree(connection, window);
  if (!reply) return {};
  const std::span children{xcb_query_tree_children(reply.get()),
                           static_cast<std::size_t>(xcb_query_tree_children_length(reply.get()))};
  return {children.begin(), children.end()};
}

std::optional<std::uint32_t> toplevelOf(const Connection& connection, std::uint32_t window) {
  while (const auto reply = tree(connection, window)) {
    if (reply->parent == XCB_NONE) return std::nullopt;
    if (reply->parent == reply->root) return window;
    window = reply->parent;
  }
  return std::nullopt;
}

std::optional<std::uint32_t> managedWindowIn(const Connection& connection, std::uint32_t toplevel) {
  return managedAmong(connection, withDescendants(connection, toplevel));
}

// A window manager marks the application's window inside its frame, but only after it has shown the
// frame; until then any of our windows inside counts. A panel that holds an icon of ours is marked
// itself.
bool belongsTo(const Connection& connection, std::uint32_t toplevel, std::int32_t process) {
  const auto isOfProcess = [&](std::uint32_t window) {
    return processOf(connection, window) == process;
  };
  if (isOfProcess(toplevel)) return true;
  const auto inside = withDescendants(connection, toplevel);
  const auto managed = managedAmong(connection, inside);
  return managed ? isOfProcess(*managed) : std::ranges::any_of(inside, isOfProcess);
}

std::optional<std::int32_t> processOf(const Connection& connection, std::uint32_t window) {
  if (const auto process = processByServer(connection, window)) return process;
  const auto said = connection.number(window, connection.atom("_NET_WM_PID"));
  if (!said) return std::nullopt;
  return static_cast<std::int32_t>(*said);
}

// In a container the number that the server knows is not the one that this process knows.
std::int32_t ownProcess(const Connection& connection) {
  const std::uint32_t own = xcb_get_setup(connection.get())->resource_id_base;
  return processByServer(connection, own).value_or(::getpid());
}

}  // namespace vesk::capture::x11
