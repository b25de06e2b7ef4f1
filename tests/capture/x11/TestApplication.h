#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "capture/x11/Connection.h"
#include "package/CaptureScope.h"

namespace vesk::capture::x11::test {

/// A program that opens windows and leaves them to the window manager, where there is one. The
/// server has heard of what it does when a call returns; the window manager may not have.
class TestApplication {
 public:
  /// @param name the class of its windows; empty for none.
  TestApplication(const std::string& display, std::string name);

  std::uint32_t open(const package::Rect& rect, const std::string& title) const;
  /// One that is not mapped yet.
  std::uint32_t create(const package::Rect& rect) const;
  void map(std::uint32_t window) const;
  void unmap(std::uint32_t window) const;
  void setText(std::uint32_t window, std::string_view property, std::string_view text) const;
  /// Such as "_NET_WM_WINDOW_TYPE_DOCK".
  void setType(std::uint32_t window, std::string_view type) const;
  void setNumber(std::uint32_t window, std::string_view property, std::uint32_t value) const;
  void move(std::uint32_t window, double x, double y) const;             ///< with its frame
  void resize(std::uint32_t window, double width, double height) const;  ///< without its frame
  /// The size without its frame.
  package::Rect geometry(std::uint32_t window) const;
  void close(std::uint32_t window) const;
  /// Asks the window manager to bring it to the front.
  void activate(std::uint32_t window) const;

  const Connection& connection() const { return connection_; }

 private:
  void sync() const;

  Connection connection_;
  std::string name_;
};

}  // namespace vesk::capture::x11::test
