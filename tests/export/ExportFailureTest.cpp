#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <random>
#include <string>
#include <string_view>

#include "ProcessLimits.h"
#include "export/ExportRenderer.h"
#include "export/ExportStage.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"

// What keeps an export from its movie: each cause is named, and nothing of the user's is lost.
namespace vesk::exporting {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

class ExportFailureTest : public ExportStage {
 protected:
  ExportFailureTest() {
    fs::create_directory(package_);
    media::makeMovie(screen_, {.ticks = media::evenTicks(60, 20), .movFlags = "+faststart"});
  }

  /// The sentence with which an export to `output` ends.
  std::string failureOf(const fs::path& output, double duration = 1.2) {
    const package::RecordingProject project = plainProject(package_, duration);
    ExportRenderer exporter(device(), makeRenderer(project, settingsFor(project)));
    const auto outcome = exporter.exportMovie(project, {}, output, [](double) {});
    return outcome ? "no failure" : outcome.error().description();
  }

  void keepOfScreen(double share) {
    const std::string bytes = media::bytesOf(screen_);
    media::writeBytes(screen_,
                      std::string_view(bytes).substr(
                          0, static_cast<std::size_t>(static_cast<double>(bytes.size()) * share)));
  }

  media::TemporaryFolder folder_;
  fs::path package_ = folder_ / "take.recording";
  fs::path screen_ = package_ / "screen.mov";
  fs::path output_ = folder_ / "movie.mp4";
};

TEST_F(ExportFailureTest, aMissingPictureIsNamed) {
  fs::remove(screen_);
  EXPECT_EQ(failureOf(output_), "读取失败：找不到文件 “screen.mov”");
  EXPECT_FALSE(fs::exists(output_));
}

TEST_F(ExportFailureTest, aLinkOutOfTheRecordingIsNotFollowed) {
  fs::rename(screen_, folder_ / "elsewhere.mov");
  fs::create_symlink(folder_ / "elsewhere.mov", screen_);
  EXPECT_THAT(failureOf(output_), AllOf(StartsWith("读取失败："), HasSubstr("指向录制包之外")));
  EXPECT_FALSE(fs::exists(output_));
}

TEST_F(ExportFailureTest, whatIsNoFileIsNotWaitedFor) {
  fs::remove(screen_);
  ASSERT_EQ(::mkfifo(screen_.c_str(), 0600), 0);
  EXPECT_THAT(failureOf(output_), AllOf(StartsWith("读取失败："), HasSubstr("不是普通文件")));
  fs::remove(screen_);
  fs::create_symlink("/dev/zero", screen_);
  EXPECT_THAT(failureOf(output_), StartsWith("读取失败："));
}

TEST_F(ExportFailureTest, anEmptyPictureFileIsDamaged) {
  media::writeBytes(screen_, "");
  EXPECT_THAT(failureOf(output_), StartsWith("读取失败：“screen.mov”"));
  EXPECT_FALSE(fs::exists(output_));
}

TEST_F(ExportFailureTest, garbageIsDamaged) {
  std::mt19937 random(7);
  std::string garbage(50'000, '\0');
  for (char& byte : garbage) byte = static_cast<char>(random());
  media::writeBytes(screen_, garbage);
  EXPECT_EQ(failureOf(output_), "读取失败：“screen.mov” 不完整或已损坏");
  EXPECT_FALSE(fs::exists(output_));
}

TEST_F(ExportFailureTest, aPictureFileCutInItsIndexCannotBeRead) {
  for (const double share : {0.2, 0.1, 0.05}) {
    keepOfScreen(share);
    EXPECT_EQ(failureOf(output_), "读取失败：“screen.mov” 不完整或已损坏") << share;
    EXPECT_FALSE(fs::exists(output_));
  }
}

TEST_F(ExportFailureTest, aPictureFileCutBehindItsIndexFailsOnTheWay) {
  keepOfScreen(0.7);
  EXPECT_EQ(failureOf(output_), "读取失败：“screen.mov” 不完整或已损坏");
  EXPECT_FALSE(fs::exists(output_));
}

TEST_F(ExportFailureTest, aSourceWithSoundOnlyHasNoPictureTrack) {
  media::makeMovie(
      screen_, {.encoder = "rawvideo", .width = 16, .height = 16, .ticks = {0}, .withSound = true});
  // Renaming the handler makes the picture track one of an unknown kind.
  std::string bytes = media::bytesOf(screen_);
  const auto handler = bytes.find("vide");
  ASSERT_NE(handler, std::string::npos);
  media::writeBytes(screen_, bytes.replace(handler, 4, "zzzz"));
  EXPECT_EQ(failureOf(output_), "源文件里没有视频轨");
}

TEST_F(ExportFailureTest, anOlderMovieOutlivesASourceThatCannotBeRead) {
  media::writeBytes(output_, "an older movie");
  fs::remove(screen_);
  EXPECT_THAT(failureOf(output_), StartsWith("读取失败："));
  EXPECT_EQ(media::bytesOf(output_), "an older movie");
}

TEST_F(ExportFailureTest, aDurationThatOnlyDamageExplainsIsRefused) {
  for (const double duration : {1e12, 1e300}) {
    EXPECT_THAT(failureOf(output_, duration), HasSubstr("时长不合理")) << duration;
    EXPECT_FALSE(fs::exists(output_));
  }
}

TEST_F(ExportFailureTest, theRecordingIsNeverWrittenInto) {
  const std::string screen = media::bytesOf(screen_);
  fs::create_directory_symlink(package_, folder_ / "link");
  fs::create_symlink(screen_, folder_ / "alias.mp4");
  fs::create_directory(package_ / "deeper");
  for (const fs::path& output :
       {screen_, package_ / "movie.mp4", package_ / "deeper" / "movie.mp4",
        folder_ / "link" / "movie.mp4", folder_ / "alias.mp4",
        folder_.path() / "elsewhere" / ".." / "take.recording" / "screen.mov"}) {
    EXPECT_EQ(failureOf(output), "写入失败：输出位置在录制包里面，请换一个文件夹") << output;
  }
  EXPECT_TRUE(media::bytesOf(screen_) == screen);
}

TEST_F(ExportFailureTest, aNeighbourWithALongerNameIsNotTheRecording) {
  fs::create_directory(folder_ / "take.recording.old");
  EXPECT_EQ(failureOf(folder_ / "take.recording.old" / "movie.mp4"), "no failure");
}

TEST_F(ExportFailureTest, anOutputWithoutANameIsRefused) {
  EXPECT_EQ(failureOf(""), "写入失败：没有给出输出文件的名字");
  EXPECT_EQ(failureOf(folder_.path() / ""), "写入失败：没有给出输出文件的名字");
}

TEST_F(ExportFailureTest, aFolderInPlaceOfTheMovieIsRefusedAndStays) {
  fs::create_directory(output_);
  EXPECT_EQ(failureOf(output_), "写入失败：“movie.mp4” 是一个文件夹");
  EXPECT_TRUE(fs::is_directory(output_));
}

TEST_F(ExportFailureTest, aMissingFolderIsNamed) {
  const fs::path missing = folder_ / "missing";
  EXPECT_EQ(failureOf(missing / "movie.mp4"),
            "写入失败：输出文件夹 “" + missing.string() + "” 不存在");
  EXPECT_FALSE(fs::exists(missing));
}

TEST_F(ExportFailureTest, aFolderThatIsNotWritableIsNamed) {
  const fs::path closed = folder_ / "closed";
  fs::create_directory(closed);
  ASSERT_EQ(::chmod(closed.c_str(), 0555), 0);
  ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
  const test::WithoutPrivileges nobody;
  EXPECT_EQ(failureOf(closed / "movie.mp4"),
            "写入失败：没有权限写入输出文件夹 “" + closed.string() + "”");
}

TEST_F(ExportFailureTest, aMovieThatOutgrowsItsDiskIsRemoved) {
  for (const rlim_t room : {0, 1'000, 4'000}) {
    std::string failure;
    {
      const test::FileSizeLimit limit(room);
      failure = failureOf(output_, 30);
    }
    EXPECT_EQ(failure, "写入失败：“movie.mp4” 超过了允许的文件大小，没有写完") << room;
    EXPECT_FALSE(fs::exists(output_)) << room;
  }
}

}  // namespace
}  // namespace vesk::exporting
