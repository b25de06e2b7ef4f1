#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "app/SharedLibrary.h"
#include "package/TemporaryDirectory.h"

namespace vesk::app {
namespace {

using package::RecordingLibrary;

// One test, because the library is made only once in a process.
TEST(SharedLibrary, isOneLibraryWithTheRootOfTheDefaultsAndScansNothingBeforeItIsAsked) {
  const package::TemporaryDirectory home;
  ::setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
  home.put("vesk/defaults.json",
           R"({"recordingLibraryPath":")" + (home / "root").native() + R"("})");
  home.put("root/a.recording/meta.json", "{}");

  RecordingLibrary& library = sharedLibrary();
  EXPECT_EQ(&sharedLibrary(), &library);
  EXPECT_EQ(library.root(), home / "root");
  EXPECT_TRUE(library.items().empty());
  library.rescan();
  EXPECT_EQ(library.items().size(), 1U);
  EXPECT_EQ(library.thumbnail(home / "root/a.recording"), std::nullopt);

  EXPECT_FALSE(library.chooseRoot()) << "there is no panel yet";
  setFolderPanel([&](const RecordingLibrary::FolderRequest& request) {
    EXPECT_EQ(request.start, home / "root");
    return std::optional(home / "chosen");
  });
  EXPECT_TRUE(library.chooseRoot());
  EXPECT_EQ(library.root(), home / "chosen");
  EXPECT_NE(home.contents("vesk/defaults.json").find("chosen"), std::string::npos);
  setFolderPanel({});
  ::unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace vesk::app
