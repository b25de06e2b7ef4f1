#include <gtest/gtest.h>

#include "capture/ShortcutSettings.h"
#include "package/LogCapture.h"
#include "package/TemporaryDirectory.h"

namespace vesk::capture {
namespace {

constexpr Shortcut controlA{.keyCode = 0, .modifierFlags = controlModifier};

class ShortcutSettingsTest : public ::testing::Test {
 protected:
  package::UserDefaults defaults() const {
    return package::UserDefaults{directory_.path() / "defaults.json"};
  }

  package::TemporaryDirectory directory_;
};

TEST_F(ShortcutSettingsTest, withoutStoredValuesTheDefaultsHold) {
  auto defaults = this->defaults();
  const ShortcutSettings settings{defaults};
  EXPECT_EQ(settings.zoomIn(), (Shortcut{.keyCode = 18, .modifierFlags = 0x80000}));
  EXPECT_EQ(settings.zoomOut(), (Shortcut{.keyCode = 19, .modifierFlags = 0x80000}));
  EXPECT_TRUE(settings.manualMarksEnabled());
}

TEST_F(ShortcutSettingsTest, unreadableValuesGiveTheDefaults) {
  auto defaults = this->defaults();
  ASSERT_TRUE(defaults.set("shortcut.zoomIn", R"({"key":"⌥1"})"));
  ASSERT_TRUE(defaults.set("shortcut.zoomOut", true));
  ASSERT_TRUE(defaults.set("shortcut.manualMarksEnabled", "no"));
  const ShortcutSettings settings{defaults};
  EXPECT_EQ(settings.zoomIn(), defaultZoomIn);
  EXPECT_EQ(settings.zoomOut(), defaultZoomOut);
  EXPECT_TRUE(settings.manualMarksEnabled());
}

TEST_F(ShortcutSettingsTest, changesAreThereAtTheNextStart) {
  {
    auto defaults = this->defaults();
    ShortcutSettings settings{defaults};
    settings.setZoomIn(controlA);
    settings.setManualMarksEnabled(false);
  }
  auto defaults = this->defaults();
  const ShortcutSettings settings{defaults};
  EXPECT_EQ(settings.zoomIn(), controlA);
  EXPECT_EQ(settings.zoomOut(), defaultZoomOut);
  EXPECT_FALSE(settings.manualMarksEnabled());
}

TEST_F(ShortcutSettingsTest, everyChangeWritesAllThreeValues) {
  auto defaults = this->defaults();
  ShortcutSettings settings{defaults};
  settings.setZoomOut(controlA);
  EXPECT_EQ(defaults.string("shortcut.zoomIn"), encodeShortcut(defaultZoomIn));
  EXPECT_EQ(defaults.string("shortcut.zoomOut"), encodeShortcut(controlA));
  EXPECT_EQ(defaults.boolean("shortcut.manualMarksEnabled"), true);
}

TEST_F(ShortcutSettingsTest, restoringLeavesTheMarksAsTheyAre) {
  auto defaults = this->defaults();
  ShortcutSettings settings{defaults};
  settings.setZoomIn(controlA);
  settings.setManualMarksEnabled(false);
  settings.restoreDefaultShortcuts();
  EXPECT_EQ(settings.zoomIn(), defaultZoomIn);
  EXPECT_EQ(settings.zoomOut(), defaultZoomOut);
  EXPECT_FALSE(settings.manualMarksEnabled());
}

TEST_F(ShortcutSettingsTest, observersHearOfEachChange) {
  auto defaults = this->defaults();
  ShortcutSettings settings{defaults};
  int changes = 0;
  const auto subscription = settings.onChange([&] { ++changes; });
  settings.setZoomIn(controlA);
  settings.setZoomIn(controlA);
  settings.setManualMarksEnabled(false);
  EXPECT_EQ(changes, 2);
}

TEST_F(ShortcutSettingsTest, aChangeThatCannotBeSavedHoldsAndIsLogged) {
  package::UserDefaults defaults{"/dev/null/defaults.json"};
  ShortcutSettings settings{defaults};
  const package::LogCapture log{package::LogCategory::hotkey};
  settings.setZoomIn(controlA);
  EXPECT_EQ(settings.zoomIn(), controlA);
  EXPECT_NE(log.text().find("shortcuts not saved"), std::string::npos);
}

}  // namespace
}  // namespace vesk::capture
