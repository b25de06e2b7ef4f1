#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "package/DurableWrite.h"
#include "package/FaultyCalls.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

using Call = FaultyCalls::Call;

TEST(DurableWrite, replacesTheContents) {
  const TemporaryDirectory directory;
  const auto file = directory.put("file", "a longer text than the next");
  EXPECT_TRUE(writeFileAtomically(file, "short"));
  EXPECT_EQ(directory.contents("file"), "short");
  EXPECT_TRUE(writeFileAtomically(file, ""));
  EXPECT_EQ(directory.contents("file"), "");
  EXPECT_FALSE(writeFileAtomically(directory.path(), "text"));
}

TEST(DurableWrite, leavesNothingBesideTheFile) {
  const TemporaryDirectory directory;
  EXPECT_TRUE(writeFileAtomically(directory / "file", "text"));
  EXPECT_FALSE(writeFileAtomically(directory / "no" / "file", "text"));
  std::filesystem::create_directory(directory / "full");
  directory.put("full/entry", "");
  EXPECT_FALSE(writeFileAtomically(directory / "full", "text"));
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre("file", "full"));
}

TEST(DurableWrite, aWriteThatFailsKeepsTheOldText) {
  const TemporaryDirectory directory;
  directory.put("file", "old");
  const std::string longName(300, 'x');
  EXPECT_FALSE(writeFileAtomically(directory / longName, "new"));
  EXPECT_EQ(directory.contents("file"), "old");
}

TEST(DurableWrite, aNewFileIsNeverAnOldOne) {
  const TemporaryDirectory directory;
  directory.put("file", "old");
  EXPECT_EQ(writeNewFile(directory / "file", "new", 0600), std::unexpected(EEXIST));
  EXPECT_EQ(directory.contents("file"), "old");
  EXPECT_TRUE(writeNewFile(directory / "other", "new", 0600));
  EXPECT_EQ(directory.contents("other"), "new");
}

TEST(DurableWrite, aNewFileThatFailsIsNotLeftBehind) {
  const TemporaryDirectory directory;
  for (const auto failing : {Call::open, Call::write, Call::synchronize}) {
    FaultyCalls calls;
    calls.before = [&](std::size_t, Call call) { return call == failing ? ENOSPC : 0; };
    EXPECT_EQ(writeNewFile(directory / "file", "new", 0600, calls), std::unexpected(ENOSPC));
    EXPECT_FALSE(std::filesystem::exists(directory / "file"));
  }
}

TEST(DurableWrite, aFileWithoutADirectoryInItsPathStandsInTheWorkingDirectory) {
  const TemporaryDirectory directory;
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(directory.path());
  EXPECT_TRUE(writeFileAtomically("file", "text"));
  std::filesystem::current_path(before);
  EXPECT_EQ(directory.contents("file"), "text");
}

}  // namespace
}  // namespace vesk::package
