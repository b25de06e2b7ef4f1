#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "capture/EventLogFile.h"
#include "package/FaultyCalls.h"
#include "package/TemporaryDirectory.h"

namespace vesk::capture {
namespace {

using package::FaultyCalls;
using Call = FaultyCalls::Call;

class EventLogFileTest : public ::testing::Test {
 protected:
  std::filesystem::path path() const { return directory_ / "events.jsonl"; }
  std::string contents() const { return directory_.contents("events.jsonl"); }
  unsigned mode() const {
    struct stat status{};
    EXPECT_EQ(::stat(path().c_str(), &status), 0);
    return status.st_mode & 0777U;
  }
  /// Fails the write of one number with an errno value; other writes go through.
  void failWrite(int index, int error) {
    calls_.before = [this, index, error](std::size_t, Call call) {
      return call == Call::write && writes_++ == index ? error : 0;
    };
  }

  package::TemporaryDirectory directory_;
  FaultyCalls calls_;
  int writes_ = 0;
};

TEST_F(EventLogFileTest, onlyItsUserMayReadIt) {
  const auto before = ::umask(0);
  const auto file = EventLogFile::create(path());
  ::umask(before);
  ASSERT_TRUE(file.has_value());
  EXPECT_EQ(mode(), 0600U);
}

TEST_F(EventLogFileTest, aFileThatStoodThereIsEmptiedAndClosedToOthers) {
  directory_.put("events.jsonl", "old\n");
  std::filesystem::permissions(path(), std::filesystem::perms{0666});
  const auto file = EventLogFile::create(path());
  ASSERT_TRUE(file.has_value());
  EXPECT_EQ(contents(), "");
  EXPECT_EQ(mode(), 0600U);
}

TEST_F(EventLogFileTest, linesAreThereAsSoonAsTheyAreAppended) {
  auto file = EventLogFile::create(path());
  ASSERT_TRUE(file && file->append("one\ntwo\n"));
  EXPECT_EQ(contents(), "one\ntwo\n");
  ASSERT_TRUE(file->append("three\n"));
  EXPECT_EQ(contents(), "one\ntwo\nthree\n");
}

TEST_F(EventLogFileTest, aFolderThatIsNotThereIsAnErrorThatNamesTheFile) {
  const auto file = EventLogFile::create(directory_ / "missing/events.jsonl");
  ASSERT_FALSE(file.has_value());
  EXPECT_EQ(file.error().kind, package::PackageError::Kind::fileUnwritable);
  EXPECT_NE(file.error().message.find("events.jsonl"), std::string::npos);
}

TEST_F(EventLogFileTest, aLinkOrPipeOfThatNameIsNotWrittenTo) {
  const auto target = directory_.put("target", "kept");
  std::filesystem::create_symlink(target, path());
  EXPECT_FALSE(EventLogFile::create(path()).has_value());
  EXPECT_EQ(directory_.contents("target"), "kept");
  std::filesystem::remove(path());
  ASSERT_EQ(::mkfifo(path().c_str(), 0600), 0);
  EXPECT_FALSE(EventLogFile::create(path()).has_value());
}

TEST_F(EventLogFileTest, aFileThatCannotBeClosedToOthersIsNotUsed) {
  calls_.before = [](std::size_t, Call call) { return call == Call::changeMode ? EPERM : 0; };
  EXPECT_FALSE(EventLogFile::create(path(), calls_).has_value());
  EXPECT_EQ(calls_.calls().back(), Call::close);
}

TEST_F(EventLogFileTest, writesInPiecesAndInterruptedOnesAreCompleted) {
  calls_.bytesAtOnce = 7;
  failWrite(1, EINTR);
  auto file = EventLogFile::create(path(), calls_);
  const std::string lines = "the first line\nthe second line\n";
  ASSERT_TRUE(file && file->append(lines));
  EXPECT_EQ(contents(), lines);
}

TEST_F(EventLogFileTest, aFullDiskIsAnErrorAndTheNextLinesAreWhole) {
  calls_.bytesAtOnce = 4;
  failWrite(1, ENOSPC);
  auto file = EventLogFile::create(path(), calls_);
  ASSERT_TRUE(file.has_value());
  const auto written = file->append("lost line\n");
  ASSERT_FALSE(written.has_value());
  EXPECT_EQ(written.error().kind, package::PackageError::Kind::fileUnwritable);
  ASSERT_TRUE(file->append("whole line\n"));
  EXPECT_EQ(contents(), "lost\nwhole line\n");
}

TEST_F(EventLogFileTest, itIsClosedOnceHoweverOftenItIsMoved) {
  {
    auto file = EventLogFile::create(path(), calls_);
    ASSERT_TRUE(file.has_value());
    auto moved = *std::move(file);
    const auto again = std::move(moved);
  }
  EXPECT_EQ(std::ranges::count(calls_.calls(), Call::close), 1);
}

}  // namespace
}  // namespace vesk::capture
