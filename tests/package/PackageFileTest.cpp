#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "package/PackageFile.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// A package in a folder with something private beside it.
class PackageFile : public testing::Test {
 protected:
  PackageFile() { folder_.put("private", "private"); }

  std::string refusal(std::string_view name) const {
    const auto file = packageFile(package_, name);
    EXPECT_EQ(readPackageFile(package_, name, 100).has_value(), file.has_value());
    return file ? "" : file.error().message;
  }

  TemporaryDirectory folder_;
  fs::path package_ = folder_.put("a.recording/meta.json", "{}").parent_path();
};

TEST_F(PackageFile, givesThePathOfAFile) {
  EXPECT_EQ(packageFile(package_, "meta.json"), package_ / "meta.json");
  EXPECT_EQ(readPackageFile(package_, "meta.json", 2), "{}");
}

TEST_F(PackageFile, givesNothingWhereNothingStands) {
  EXPECT_EQ(packageFile(package_, "edit.json"), std::nullopt);
  EXPECT_EQ(packageFile(folder_ / "missing.recording", "meta.json"), std::nullopt);
  const auto text = readPackageFile(package_, "edit.json", 100);
  ASSERT_FALSE(text);
  EXPECT_THAT(text.error().message, HasSubstr("edit.json”：文件或文件夹不存在。"));
}

TEST_F(PackageFile, readsNoMoreThanItsLimit) {
  EXPECT_FALSE(readPackageFile(package_, "meta.json", 1));
}

TEST_F(PackageFile, followsALinkInsideThePackage) {
  fs::create_symlink("meta.json", package_ / "edit.json");
  fs::create_symlink(package_ / "meta.json", package_ / "absolute.json");
  EXPECT_EQ(packageFile(package_, "edit.json"), package_ / "edit.json");
  EXPECT_EQ(readPackageFile(package_, "edit.json", 2), "{}");
  EXPECT_EQ(refusal("absolute.json"), "");
}

TEST_F(PackageFile, refusesALinkOutOfThePackage) {
  fs::create_symlink(folder_ / "private", package_ / "absolute");
  fs::create_symlink("../private", package_ / "relative");
  fs::create_symlink("relative", package_ / "chain");
  for (const char* name : {"absolute", "relative", "chain"}) {
    EXPECT_THAT(refusal(name), HasSubstr(std::string(name) + "”：它是一个链接，指向录制包之外。"));
  }
}

TEST_F(PackageFile, refusesALinkIntoAPackageWhoseNameBeginsAlike) {
  folder_.put("a.recording2/meta.json", "{}");
  fs::create_symlink("../a.recording2/meta.json", package_ / "edit.json");
  EXPECT_THAT(refusal("edit.json"), HasSubstr("指向录制包之外"));
}

TEST_F(PackageFile, refusesAFileBehindALinkedDirectoryOutside) {
  fs::create_directory_symlink("..", package_ / "up");
  EXPECT_THAT(refusal("up/private"), HasSubstr("指向录制包之外"));
}

TEST_F(PackageFile, refusesALinkThatLeadsNowhere) {
  fs::create_symlink("missing", package_ / "camera.mov");
  EXPECT_THAT(refusal("camera.mov"), HasSubstr("它是一个链接，指向的文件不存在。"));
}

TEST_F(PackageFile, refusesLinksThatLeadToEachOther) {
  fs::create_symlink("b", package_ / "a");
  fs::create_symlink("a", package_ / "b");
  EXPECT_THAT(refusal("a"), HasSubstr("链接互相指向，没有终点。"));
}

TEST_F(PackageFile, refusesWhatIsNoRegularFile) {
  fs::create_directory(package_ / "directory");
  ASSERT_EQ(::mkfifo((package_ / "pipe").c_str(), 0600), 0);
  for (const char* name : {"directory", "pipe"}) {
    EXPECT_THAT(refusal(name), HasSubstr("它不是普通文件。"));
  }
}

TEST_F(PackageFile, refusesALinkToADevice) {
  fs::create_symlink("/dev/zero", package_ / "mic.m4a");
  EXPECT_THAT(refusal("mic.m4a"), HasSubstr("指向录制包之外"));
}

TEST_F(PackageFile, refusesALinkToThePackageItself) {
  fs::create_symlink(".", package_ / "self");
  EXPECT_NE(refusal("self"), "");
}

TEST_F(PackageFile, aPackageMayBeReachedThroughALink) {
  fs::create_directory_symlink("a.recording", folder_ / "link");
  EXPECT_EQ(packageFile(folder_ / "link", "meta.json"), folder_ / "link/meta.json");
  EXPECT_EQ(packageFile(folder_ / "link/", "meta.json"), folder_ / "link/meta.json");
}

}  // namespace
}  // namespace vesk::package
