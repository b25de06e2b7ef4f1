#include <gtest/gtest.h>

#include "capture/contract/FrontApplicationContract.h"
#include "capture/fake/FakeFrontApplication.h"

namespace vesk::capture {
namespace {

using fake::FakeFrontApplication;

class FakeFrontRig {
 public:
  FrontApplication& frontApplication() { return front_; }
  std::string nameOf(int index) const { return index == 0 ? "编辑器" : "浏览器"; }
  void activate(int index) { front_.activate(nameOf(index)); }

 private:
  FakeFrontApplication front_;
};

TEST(FakeFrontApplication, nothingMayBeInFront) {
  FakeFrontApplication front{"编辑器"};
  front.activate(std::nullopt);
  EXPECT_EQ(front.name(), std::nullopt);
}

TEST(FakeFrontApplication, nobodyCanListenAfterAFailure) {
  FakeFrontApplication front;
  front.fail({.message = "显示服务器已断开"});
  EXPECT_FALSE(front.listen([](const FrontApplication::Name&) {}).has_value());
}

}  // namespace

namespace contract {
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, FrontApplicationContract, FakeFrontRig);
}  // namespace contract

}  // namespace vesk::capture
