#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "package/LibraryRoot.h"
#include "package/TemporaryDirectory.h"
#include "package/VideosFolder.h"

namespace vesk::package {
namespace {

TEST(VideosFolder, isVideosInTheHomeWithoutAnEntry) {
  EXPECT_EQ(videosFolder("/home/u", ""), "/home/u/Videos");
  EXPECT_EQ(videosFolder("/home/u", "# XDG_VIDEOS_DIR=\"/x\"\nXDG_MUSIC_DIR=\"/m\"\n"),
            "/home/u/Videos");
}

TEST(VideosFolder, isTheOneThatTheEntryNames) {
  EXPECT_EQ(videosFolder("/home/u", "XDG_VIDEOS_DIR=\"$HOME/视频\"\n"), "/home/u/视频");
  EXPECT_EQ(videosFolder("/home/u", "  XDG_VIDEOS_DIR=\"/data/my \\\"clips\\\"\""),
            "/data/my \"clips\"");
  EXPECT_EQ(videosFolder("/home/u", "XDG_VIDEOS_DIR=\"$HOME\""), "/home/u");
  EXPECT_EQ(videosFolder("/home/u", "XDG_VIDEOS_DIR=\"/a\"\nXDG_VIDEOS_DIR=\"/b\"\n"), "/b");
}

TEST(VideosFolder, ignoresEntriesOfAnotherForm) {
  for (const char* line :
       {"XDG_VIDEOS_DIR=/a", "XDG_VIDEOS_DIR=\"relative\"", "XDG_VIDEOS_DIR=\"/open",
        "XDG_VIDEOS_DIR=\"$HOMER/a\"", "XDG_VIDEOS_DIR=", "XDG_VIDEOS_DIR=\"\\"}) {
    EXPECT_EQ(videosFolder("/home/u", line), "/home/u/Videos") << line;
  }
}

TEST(LibraryRoot, theDefaultRootIsAnAbsoluteFolderOfThisName) {
  EXPECT_TRUE(defaultRoot().is_absolute());
  EXPECT_EQ(defaultRoot().filename(), "Vesk");
}

TEST(LibraryRoot, theStoredPathIsTheRootUnlessItIsEmpty) {
  const TemporaryDirectory directory;
  UserDefaults defaults(directory / "defaults.json");
  EXPECT_EQ(currentRootFromDefaults(defaults), defaultRoot());
  ASSERT_TRUE(defaults.set("recordingLibraryPath", std::string_view("")));
  EXPECT_EQ(currentRootFromDefaults(defaults), defaultRoot());
  ASSERT_TRUE(defaults.set("recordingLibraryPath", std::string_view("/data/录制")));
  EXPECT_EQ(currentRootFromDefaults(defaults), "/data/录制");
}

TEST(LibraryRoot, aPackageIsNamedByTheLocalTime) {
  const char* const old = std::getenv("TZ");
  const std::string saved = old == nullptr ? "" : old;
  ::setenv("TZ", "UTC-8", 1);
  ::tzset();
  const Timestamp date{std::chrono::seconds(1795167667)};
  EXPECT_EQ(newPackageURL("/root", date), "/root/20261120-174107.recording");
  old == nullptr ? ::unsetenv("TZ") : ::setenv("TZ", saved.c_str(), 1);
  ::tzset();
}

}  // namespace
}  // namespace vesk::package
