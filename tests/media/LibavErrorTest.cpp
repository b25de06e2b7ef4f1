#include <gtest/gtest.h>

#include <cerrno>

#include "media/LibavError.h"
#include "media/TemporaryFolder.h"

namespace vesk::media {
namespace {

using Kind = MediaError::Kind;

TEST(LibavError, theCausesOfAFullDiskAreToldApart) {
  const auto error = [](int cause) { return writingError(Kind::writeFailed, -cause, "a/b.mp4"); };
  EXPECT_EQ(error(ENOSPC), (MediaError{Kind::diskFull, "磁盘空间不足，“b.mp4” 没有写完"}));
  EXPECT_EQ(error(EDQUOT), (MediaError{Kind::diskFull, "磁盘配额已用完，“b.mp4” 没有写完"}));
  EXPECT_EQ(error(EFBIG), (MediaError{Kind::diskFull, "“b.mp4” 超过了允许的文件大小，没有写完"}));
}

TEST(LibavError, readingWithoutPermissionIsNamed) {
  EXPECT_EQ(readingError(Kind::openFailed, -EACCES, "a/screen.mov"),
            (MediaError{Kind::openFailed, "没有权限读取 “screen.mov”"}));
}

TEST(LibavError, aReadOnlyDiskIsNamed) {
  const TemporaryFolder folder;
  EXPECT_EQ(writingError(Kind::writeFailed, -EROFS, folder / "b.mp4").message,
            "输出文件夹 “" + folder.path().string() + "” 所在的磁盘是只读的");
}

TEST(LibavError, aBrokenDiskIsNamedBothWays) {
  EXPECT_EQ(readingError(Kind::decodeFailed, -EIO, "screen.mov"),
            (MediaError{Kind::decodeFailed, "“screen.mov” 读不出来：磁盘读写出错"}));
  EXPECT_EQ(writingError(Kind::writeFailed, -EIO, "b.mp4"),
            (MediaError{Kind::writeFailed, "“b.mp4” 写不进去：磁盘读写出错"}));
}

TEST(LibavError, anUnknownCauseKeepsTheLibrarysWords) {
  EXPECT_EQ(readingError(Kind::openFailed, -ENOTSUP, "screen.mov").message,
            "“screen.mov” 读不出来：Operation not supported");
}

}  // namespace
}  // namespace vesk::media
