#include <gtest/gtest.h>

#include "export/ExportError.h"

namespace vesk::exporting {
namespace {

TEST(ExportError, aFailureOfTheReaderNamesItsCause) {
  EXPECT_EQ(ExportError::readerFailed("读取中断").description(), "读取失败：读取中断");
}

TEST(ExportError, aFailureOfTheWriterNamesItsCause) {
  EXPECT_EQ(ExportError::writerFailed("磁盘空间不足").description(), "写入失败：磁盘空间不足");
}

TEST(ExportError, aSourceWithoutPictureSaysSo) {
  EXPECT_EQ(ExportError::noVideoTrack().description(), "源文件里没有视频轨");
}

TEST(ExportError, aCancellationSaysSo) {
  EXPECT_EQ(ExportError::cancelled().description(), "已取消");
}

TEST(ExportError, errorsOfDifferentKindDiffer) {
  EXPECT_NE(ExportError::readerFailed("x"), ExportError::writerFailed("x"));
  EXPECT_NE(ExportError::readerFailed("x"), ExportError::readerFailed("y"));
  EXPECT_EQ(ExportError::cancelled(), ExportError::cancelled());
}

}  // namespace
}  // namespace vesk::exporting
