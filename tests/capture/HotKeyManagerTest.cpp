#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "capture/HotKeyManager.h"
#include "capture/fake/FakeHotKeys.h"
#include "package/LogCapture.h"

namespace vesk::capture {
namespace {

using Action = HotKeyManager::Action;
using Actions = std::vector<Action>;
using fake::FakeHotKeys;

class HotKeyManagerTest : public ::testing::Test {
 protected:
  HotKeyManagerTest() { hear(); }

  void hear() {
    manager_->onTrigger = [this](Action action) { triggered_.push_back(action); };
  }
  void runMain() {
    for (const auto& task : std::exchange(main_, {})) task();
  }

  FakeHotKeys hotKeys_;
  std::vector<std::function<void()>> main_;
  std::unique_ptr<HotKeyManager> manager_ = std::make_unique<HotKeyManager>(
      hotKeys_, KeyNames{[](KeyCode keyCode) { return keyCode == 18 ? "1" : "2"; }},
      [this](std::function<void()> task) { main_.push_back(std::move(task)); });
  Actions triggered_;
};

TEST_F(HotKeyManagerTest, bothKeysTriggerOnTheMainThread) {
  EXPECT_EQ(manager_->registerKeys(defaultZoomIn, defaultZoomOut), Actions{});
  hotKeys_.press(defaultZoomOut);
  hotKeys_.press(defaultZoomIn);
  EXPECT_EQ(triggered_, Actions{});
  runMain();
  EXPECT_EQ(triggered_, (Actions{Action::zoomOut, Action::zoomIn}));
}

TEST_F(HotKeyManagerTest, aCombinationThatIsNoHotKeyFailsAndIsNotHeld) {
  const Shortcut shiftA{.keyCode = 0, .modifierFlags = shiftModifier};
  EXPECT_EQ(manager_->registerKeys(shiftA, defaultZoomOut), Actions{Action::zoomIn});
  EXPECT_EQ(hotKeys_.heldCount(), 1U);
}

TEST_F(HotKeyManagerTest, ofTwoEqualCombinationsTheSecondFails) {
  EXPECT_EQ(manager_->registerKeys(defaultZoomIn, defaultZoomIn), Actions{Action::zoomOut});
  hotKeys_.press(defaultZoomIn);
  runMain();
  EXPECT_EQ(triggered_, Actions{Action::zoomIn});
}

TEST_F(HotKeyManagerTest, takenCombinationsFailInOrderAndTheOtherGoesOn) {
  hotKeys_.occupy(defaultZoomIn);
  EXPECT_EQ(manager_->registerKeys(defaultZoomIn, defaultZoomOut), Actions{Action::zoomIn});
  hotKeys_.occupy(defaultZoomOut);
  EXPECT_EQ(manager_->registerKeys(defaultZoomIn, defaultZoomOut),
            (Actions{Action::zoomIn, Action::zoomOut}));
}

TEST_F(HotKeyManagerTest, registeringTakesThePlaceOfTheKeysBefore) {
  manager_->registerKeys(defaultZoomIn, defaultZoomOut);
  EXPECT_EQ(manager_->registerKeys(defaultZoomOut, defaultZoomIn), Actions{});
  hotKeys_.press(defaultZoomIn);
  runMain();
  EXPECT_EQ(triggered_, Actions{Action::zoomOut});
  EXPECT_EQ(hotKeys_.listenCount(), 1);
}

TEST_F(HotKeyManagerTest, unregisteredKeysDoNothing) {
  manager_->registerKeys(defaultZoomIn, defaultZoomOut);
  manager_->unregisterAll();
  hotKeys_.press(defaultZoomIn);
  runMain();
  EXPECT_EQ(triggered_, Actions{});
  EXPECT_EQ(hotKeys_.heldCount(), 0U);
}

TEST_F(HotKeyManagerTest, numbersOfNoActionAreIgnored) {
  manager_->registerKeys(defaultZoomIn, defaultZoomOut);
  for (const HotKeys::ID id : {0U, 3U, 1U, 99U}) hotKeys_.trigger(id);
  runMain();
  EXPECT_EQ(triggered_, Actions{Action::zoomIn});
}

TEST_F(HotKeyManagerTest, aPressThatTheMainThreadHearsTooLateIsDropped) {
  manager_->registerKeys(defaultZoomIn, defaultZoomOut);
  hotKeys_.press(defaultZoomIn);
  manager_.reset();
  runMain();
  EXPECT_EQ(triggered_, Actions{});
  EXPECT_EQ(hotKeys_.heldCount(), 0U);
}

TEST_F(HotKeyManagerTest, theLogTellsWhatIsRegisteredAndWhatFails) {
  hotKeys_.occupy(defaultZoomOut);
  const package::LogCapture log{package::LogCategory::hotkey};
  manager_->registerKeys(defaultZoomIn, defaultZoomOut);
  EXPECT_EQ(log.text(),
            "info: registered zoomIn as ⌥1\n"
            "error: register zoomOut failed (10) — 可能已被其它 App 占用\n");
}

}  // namespace
}  // namespace vesk::capture
