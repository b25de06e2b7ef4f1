#include <gtest/gtest.h>

#include "editor/SilentSoundOutput.h"
#include "editor/contract/SoundOutputContract.h"

namespace vesk::editor {
namespace contract {
namespace {

class SilentRig {
 public:
  static constexpr bool isAudible = false;
  SoundOutput& output() { return output_; }

 private:
  SilentSoundOutput output_{&hostTime};
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Silent, SoundOutputContract, SilentRig);

}  // namespace contract

namespace {

using std::chrono::seconds;

TEST(SilentSoundOutput, goesByTheClockThatItIsGiven) {
  media::HostTime now = seconds{100};
  SilentSoundOutput output{[&] { return now; }};
  output.start([](auto) { FAIL() << "nobody would hear it"; });
  EXPECT_EQ(output.heard(now), 0);
  EXPECT_EQ(output.heard(seconds{103}), 3);
  output.stop();
  now = seconds{200};
  output.start({});
  EXPECT_EQ(output.heard(seconds{201}), 1);
}

}  // namespace
}  // namespace vesk::editor
