#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <string>

#include "capture/x11/DesktopSettings.h"
#include "capture/x11/TestDisplay.h"

namespace vesk::capture::x11 {
namespace {

/// Settings as a desktop publishes them, in either order of bytes.
class Settings {
 public:
  explicit Settings(bool isBigEndian) : isBigEndian_{isBigEndian} {}

  Settings& number(const std::string& name, std::uint32_t value) {
    begin(0, name);
    body_ += word(value, 4);
    return *this;
  }
  Settings& text(const std::string& name, const std::string& value) {
    begin(1, name);
    body_ += word(static_cast<std::uint32_t>(value.size()), 4) + padded(value);
    return *this;
  }
  Settings& colour(const std::string& name) {
    begin(2, name);
    body_ += std::string(8, '\x7F');
    return *this;
  }

  std::string bytes() const {
    return std::string(1, isBigEndian_ ? '\1' : '\0') + std::string(3, '\0') + word(1, 4) +
           word(count_, 4) + body_;
  }

 private:
  void begin(char type, const std::string& name) {
    ++count_;
    body_ += std::string{type, '\0'} + word(static_cast<std::uint32_t>(name.size()), 2) +
             padded(name) + word(9, 4);
  }
  std::string word(std::uint32_t value, int size) const {
    std::string word;
    for (int i = 0; i < size; ++i) {
      const int place = isBigEndian_ ? size - 1 - i : i;
      word += static_cast<char>(value >> (8 * place));
    }
    return word;
  }
  static std::string padded(std::string text) {
    text.resize((text.size() + 3) / 4 * 4);
    return text;
  }

  bool isBigEndian_;
  std::uint32_t count_ = 0;
  std::string body_;
};

Settings desktop(bool isBigEndian) {
  Settings settings{isBigEndian};
  settings.text("Net/ThemeName", "Adwaita")
      .number("Net/DoubleClickTime", 700)
      .colour("Gtk/Colour")
      .number("Net/DoubleClickDistance", 9)
      .number("Xft/DPI", static_cast<std::uint32_t>(-1));
  return settings;
}

class DesktopSettings : public testing::TestWithParam<bool> {};

TEST_P(DesktopSettings, aNumberIsFoundAmongOtherSettings) {
  const auto bytes = desktop(GetParam()).bytes();
  EXPECT_EQ(settingNumber(bytes, "Net/DoubleClickTime"), 700);
  EXPECT_EQ(settingNumber(bytes, "Net/DoubleClickDistance"), 9);
  EXPECT_EQ(settingNumber(bytes, "Xft/DPI"), -1);
  EXPECT_EQ(settingNumber(bytes, "Net/ThemeName"), std::nullopt);
  EXPECT_EQ(settingNumber(bytes, "Net/CursorBlink"), std::nullopt);
}

TEST_P(DesktopSettings, cutBytesGiveNothingBehindTheCut) {
  const auto bytes = desktop(GetParam()).bytes();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_EQ(settingNumber(std::string_view{bytes}.substr(0, size), "Xft/DPI"), std::nullopt)
        << size;
  }
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, DesktopSettings, testing::Bool());

TEST(DesktopSettingsOnADisplay, aDesktopWithoutSettingsHasTheUsualDoubleClick) {
  const test::TestDisplay display;
  EXPECT_EQ(readDoubleClick(display.connection()), (DoubleClick{.interval = 0.4, .distance = 5}));
}

TEST(DesktopSettingsOnADisplay, theDesktopsDoubleClickIsRead) {
  const test::TestDisplay display;
  const auto& connection = display.connection();
  const auto window = xcb_generate_id(connection.get());
  xcb_create_window(connection.get(), 0, window, connection.root(), 0, 0, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  const auto bytes = desktop(false).bytes();
  const auto type = connection.atom("_XSETTINGS_SETTINGS");
  xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window, type, type, 8,
                      static_cast<std::uint32_t>(bytes.size()), bytes.data());
  xcb_set_selection_owner(connection.get(), window, connection.atom("_XSETTINGS_S0"),
                          XCB_CURRENT_TIME);
  display.sync();
  EXPECT_EQ(readDoubleClick(connection), (DoubleClick{.interval = 0.7, .distance = 9}));
}

}  // namespace
}  // namespace vesk::capture::x11
