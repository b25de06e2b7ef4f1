#include "capture/x11/DesktopSettings.h"

#include <fmt/format.h>
#include <xcb/xcb.h>

#include <cstddef>
#include <string>

namespace vesk::capture::x11 {
namespace {

enum class Type : std::uint8_t { number = 0, text = 1, colour = 2 };

/// Reads the fields one after another. What lies behind the end reads as 0 and is told at the end.
class Reader {
 public:
  explicit Reader(std::string_view bytes)
      : bytes_{bytes}, isBigEndian_{!bytes.empty() && bytes.front() == 1} {
    skip(4);
  }

  bool isComplete() const { return !isCut_; }

  std::uint8_t byte() {
    const auto taken = take(1);
    return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
  }
  std::uint32_t number(std::size_t size) {
    std::uint32_t value = 0;
    unsigned shift = 0;
    for (const char character : take(size)) {
      const std::uint32_t byte = static_cast<std::uint8_t>(character);
      value = isBigEndian_ ? value << 8 | byte : value | byte << shift;
      shift += 8;
    }
    return value;
  }
  /// Texts are filled up to whole words of four bytes.
  std::string_view text(std::size_t size) {
    const auto text = take(size);
    skip((4 - size % 4) % 4);
    return text;
  }
  void skip(std::size_t size) { take(size); }

 private:
  std::string_view take(std::size_t size) {
    isCut_ = isCut_ || size > bytes_.size();
    if (isCut_) return {};
    const auto taken = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return taken;
  }

  std::string_view bytes_;
  bool isBigEndian_;
  bool isCut_ = false;
};

/// The settings' bytes are kept by the window that owns them; empty when there is none.
std::string readSettings(const Connection& connection) {
  const auto name = connection.atom(fmt::format("_XSETTINGS_S{}", connection.screenNumber()));
  const auto owner = owned(xcb_get_selection_owner_reply(
      connection.get(), xcb_get_selection_owner(connection.get(), name), nullptr));
  if (!owner || owner->owner == XCB_WINDOW_NONE) return {};
  return connection.property(owner->owner, connection.atom("_XSETTINGS_SETTINGS")).value_or("");
}

}  // namespace

std::optional<std::int32_t> settingNumber(std::string_view bytes, std::string_view name) {
  Reader reader{bytes};
  reader.skip(4);  // the serial number
  const auto count = reader.number(4);
  for (std::uint32_t i = 0; i < count && reader.isComplete(); ++i) {
    const auto type = static_cast<Type>(reader.byte());
    reader.skip(1);
    const auto settingName = reader.text(reader.number(2));
    reader.skip(4);  // the serial number of its last change
    if (type == Type::number) {
      const auto value = static_cast<std::int32_t>(reader.number(4));
      if (settingName == name && reader.isComplete()) return value;
    } else if (type == Type::text) {
      reader.text(reader.number(4));
    } else {
      reader.skip(8);
    }
  }
  return std::nullopt;
}

DoubleClick readDoubleClick(const Connection& connection) {
  const auto settings = readSettings(connection);
  DoubleClick doubleClick;
  if (const auto milliseconds = settingNumber(settings, "Net/DoubleClickTime")) {
    doubleClick.interval = *milliseconds / 1000.0;
  }
  if (const auto pixels = settingNumber(settings, "Net/DoubleClickDistance")) {
    doubleClick.distance = *pixels;
  }
  return doubleClick;
}

}  // namespace vesk::capture::x11
