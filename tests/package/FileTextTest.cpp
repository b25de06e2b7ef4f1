#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "package/FileText.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

using testing::HasSubstr;

TEST(FileText, aFileReadsBackWhole) {
  const TemporaryDirectory directory;
  const std::string text("a\0b\n\xFF", 5);
  EXPECT_EQ(readWholeFile(directory.put("file", text), 5), text);
  EXPECT_EQ(readWholeFile(directory.put("empty", ""), 5), "");
}

TEST(FileText, aMissingFileIsNamedWithItsCause) {
  const TemporaryDirectory directory;
  const auto text = readWholeFile(directory / "meta.json", 10);
  ASSERT_FALSE(text);
  EXPECT_EQ(text.error().kind, PackageError::Kind::fileUnreadable);
  EXPECT_THAT(text.error().message, HasSubstr("meta.json”：文件或文件夹不存在。"));
}

TEST(FileText, aFileBeyondTheLimitIsRefused) {
  const TemporaryDirectory directory;
  const auto file = directory.put("file", "123456");
  EXPECT_TRUE(readWholeFile(file, 6));
  const auto text = readWholeFile(file, 5);
  ASSERT_FALSE(text);
  EXPECT_THAT(text.error().message, HasSubstr("文件有 6 字节，超过上限 5 字节"));
}

TEST(FileText, aHugeSparseFileIsRefusedWithoutReadingIt) {
  const TemporaryDirectory directory;
  const auto file = directory.put("file", "");
  std::filesystem::resize_file(file, std::uintmax_t{1} << 40);
  EXPECT_FALSE(readWholeFile(file, std::uintmax_t{1} << 30));
}

TEST(FileText, aPipeInPlaceOfAFileDoesNotHang) {
  const TemporaryDirectory directory;
  const auto pipe = directory / "meta.json";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const auto text = readWholeFile(pipe, 10);
  ASSERT_FALSE(text);
  EXPECT_THAT(text.error().message, HasSubstr("它不是普通文件"));
  EXPECT_FALSE(writeFile(pipe, "text"));
}

TEST(FileText, devicesAndDirectoriesAreNoFiles) {
  const TemporaryDirectory directory;
  EXPECT_FALSE(readWholeFile("/dev/zero", 10));
  EXPECT_FALSE(readWholeFile(directory.path(), 10));
  EXPECT_FALSE(writeFile(directory.path(), "text"));
}

TEST(FileText, writingReplacesTheContents) {
  const TemporaryDirectory directory;
  const auto file = directory.put("file", "a longer text than the next");
  EXPECT_TRUE(writeFile(file, "short"));
  EXPECT_EQ(directory.contents("file"), "short");
}

TEST(FileText, aFullDiskIsSaid) {
  const auto result = writeFile("/dev/full", "text");
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().kind, PackageError::Kind::fileUnwritable);
  EXPECT_EQ(result.error().message, "无法写入“/dev/full”：磁盘空间不足。");
}

}  // namespace
}  // namespace vesk::package
