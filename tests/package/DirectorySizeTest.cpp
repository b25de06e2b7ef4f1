#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>

#include "package/DirectorySize.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

std::int64_t blocksOf(const std::filesystem::path& file) {
  struct stat status{};
  EXPECT_EQ(::lstat(file.c_str(), &status), 0);
  return std::int64_t{status.st_blocks} * 512;
}

TEST(DirectorySize, isWhatTheFilesOccupyAtEveryLevelHiddenOnesToo) {
  const TemporaryDirectory directory;
  const auto a = directory.put("a", std::string(10'000, 'a'));
  const auto b = directory.put("below/deeper/b", std::string(5000, 'b'));
  const auto hidden = directory.put("below/.hidden", "h");
  const auto size = allocatedSize(directory.path());
  EXPECT_EQ(size, blocksOf(a) + blocksOf(b) + blocksOf(hidden));
  EXPECT_GE(size, 15'000);
}

TEST(DirectorySize, holesTakeNoRoom) {
  const TemporaryDirectory directory;
  const auto file = directory.put("sparse", "");
  std::filesystem::resize_file(file, std::uintmax_t{1} << 40);
  EXPECT_EQ(allocatedSize(directory.path()), blocksOf(file));
  EXPECT_LT(allocatedSize(directory.path()), 1 << 20);
}

TEST(DirectorySize, linksAreNotFollowed) {
  const TemporaryDirectory directory;
  const TemporaryDirectory elsewhere;
  elsewhere.put("large", std::string(1 << 20, 'x'));
  std::filesystem::create_directory_symlink(elsewhere.path(), directory / "out");
  std::filesystem::create_symlink(elsewhere / "large", directory / "file");
  std::filesystem::create_directory_symlink(directory.path(), directory / "loop");
  EXPECT_LT(allocatedSize(directory.path()), 1 << 16);
}

TEST(DirectorySize, isFoundThroughALinkToTheDirectory) {
  const TemporaryDirectory directory;
  directory.put("package/a", std::string(10'000, 'a'));
  std::filesystem::create_directory_symlink(directory / "package", directory / "link");
  EXPECT_EQ(allocatedSize(directory / "link"), allocatedSize(directory / "package"));
}

TEST(DirectorySize, veryDeepLevelsAreLeftOut) {
  const TemporaryDirectory directory;
  std::filesystem::path deep = directory.path();
  for (int level = 0; level < 100; ++level) deep /= "d";
  std::filesystem::create_directories(deep);
  directory.put((deep / "far").lexically_relative(directory.path()).native(), "far away");
  EXPECT_EQ(allocatedSize(directory.path()), 0);
}

TEST(DirectorySize, whatCannotBeListedIsEmpty) {
  const TemporaryDirectory directory;
  EXPECT_EQ(allocatedSize(directory / "missing"), 0);
  EXPECT_EQ(allocatedSize(directory.put("file", "text")), 0);
}

TEST(DirectorySizeDeathTest, aSumBeyondAllDisksEndsTheProcess) {
  EXPECT_EQ(sumOfSizes(3, 4), 7);
  EXPECT_DEATH(sumOfSizes(std::numeric_limits<std::int64_t>::max(), 1), "");
}

}  // namespace
}  // namespace vesk::package
