#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "export/TemporaryFile.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"

namespace vesk::exporting {
namespace {

namespace fs = std::filesystem;

TEST(TemporaryFile, bearsAHiddenNameWithANewUuid) {
  const media::TemporaryFolder folder;
  const TemporaryFile first(folder.path(), ".tqzn-mux-", ".mp4");
  const TemporaryFile second(folder.path(), ".tqzn-mux-", ".mp4");
  EXPECT_EQ(first.path().parent_path(), folder.path());
  EXPECT_THAT(first.path().filename().string(),
              testing::MatchesRegex("\\.tqzn-mux-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-"
                                    "[89AB][0-9A-F]{3}-[0-9A-F]{12}\\.mp4"));
  EXPECT_NE(first.path(), second.path());
}

TEST(TemporaryFile, isRemovedWithTheObjectUnlessKept) {
  const media::TemporaryFolder folder;
  fs::path kept;
  fs::path removed;
  {
    TemporaryFile first(folder.path(), "a", ".x");
    TemporaryFile second(folder.path(), "b", ".x");
    media::writeBytes(first.path(), "1");
    media::writeBytes(second.path(), "2");
    first.keep();
    kept = first.path();
    removed = second.path();
  }
  EXPECT_TRUE(fs::exists(kept));
  EXPECT_FALSE(fs::exists(removed));
}

}  // namespace
}  // namespace vesk::exporting
