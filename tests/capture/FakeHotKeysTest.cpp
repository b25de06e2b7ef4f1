#include <gtest/gtest.h>

#include "capture/contract/HotKeysContract.h"
#include "capture/fake/FakeHotKeys.h"

namespace vesk::capture {
namespace {

using fake::FakeHotKeys;

class FakeHotKeysRig {
 public:
  HotKeys& hotKeys() { return hotKeys_; }
  void press(const Shortcut& shortcut) { hotKeys_.press(shortcut); }
  void toggle(contract::Lock /*lock*/) {}
  void occupy(const Shortcut& shortcut) { hotKeys_.occupy(shortcut); }

 private:
  FakeHotKeys hotKeys_;
};

TEST(FakeHotKeys, itTellsHowManyCombinationsAreHeldAndWhyOneIsNot) {
  FakeHotKeys hotKeys;
  EXPECT_TRUE(hotKeys.hold(1, defaultZoomIn));
  EXPECT_EQ(hotKeys.hold(2, defaultZoomIn).error(), FakeHotKeys::taken);
  EXPECT_EQ(hotKeys.hold(2, {.keyCode = 128}).error(), FakeHotKeys::noSuchKey);
  EXPECT_EQ(hotKeys.heldCount(), 1U);
  hotKeys.releaseAll();
  EXPECT_EQ(hotKeys.heldCount(), 0U);
}

}  // namespace

namespace contract {
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, HotKeysContract, FakeHotKeysRig);
}  // namespace contract

}  // namespace vesk::capture
