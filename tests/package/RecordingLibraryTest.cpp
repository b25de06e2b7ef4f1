#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "package/LibraryRoot.h"
#include "package/Log.h"
#include "package/RecordingLibrary.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr Timestamp now{std::chrono::seconds(1795167667)};

class RecordingLibraryTest : public testing::Test {
 protected:
  RecordingLibraryTest() { storeRoot(directory_ / "root"); }

  void storeRoot(const fs::path& root) {
    ASSERT_TRUE(defaults_.set(libraryPathKey, std::string_view(root.native())));
  }

  RecordingLibrary makeLibrary() {
    return RecordingLibrary(
        {.defaults = defaults_,
         .trashFolder = TrashFolder(
             {.dataHome = directory_ / "share", .userID = ::getuid(), .mountOf = mountOf}),
         .makeThumbnail =
             [this](const fs::path& package) {
               thumbnailsOf_.push_back(package);
               return std::optional(thumbnail_);
             },
         .askForFolder =
             [this](const RecordingLibrary::FolderRequest& request) {
               requests_.push_back(request);
               return chosenFolder_;
             },
         .now = [] { return now; }});
  }

  void putPackage(const std::string& name, const std::string& createdAt) const {
    directory_.put("root/" + name + "/meta.json", R"({"createdAt":")" + createdAt + R"("})");
    directory_.put("root/" + name + "/screen.mov", std::string(10'000, 'x'));
  }

  static std::vector<std::string> namesOf(const RecordingLibrary& library) {
    std::vector<std::string> names;
    for (const auto& item : library.items()) names.push_back(item.url.filename());
    return names;
  }

  TemporaryDirectory directory_;
  UserDefaults defaults_{directory_ / "defaults.json"};
  Picture thumbnail_{.width = 1, .height = 1, .pixels = {1, 2, 3}};
  std::vector<fs::path> thumbnailsOf_;
  std::vector<RecordingLibrary::FolderRequest> requests_;
  std::optional<fs::path> chosenFolder_;
};

TEST_F(RecordingLibraryTest, startsWithTheStoredRootAndDoesNotScan) {
  putPackage("a.recording", "2026-11-20T09:41:07Z");
  const auto library = makeLibrary();
  EXPECT_EQ(library.root(), directory_ / "root");
  EXPECT_THAT(library.items(), IsEmpty());
  EXPECT_EQ(library.totalBytes(), 0);
}

TEST_F(RecordingLibraryTest, anEmptyStoredPathMeansTheDefaultRoot) {
  storeRoot("");
  const auto library = makeLibrary();
  EXPECT_EQ(library.root(), defaultRoot());
  EXPECT_TRUE(library.isDefaultRoot());
}

TEST_F(RecordingLibraryTest, aScanListsTheNewestFirstWithTheirBytes) {
  putPackage("b.recording", "2026-11-20T09:41:07Z");
  putPackage("c.recording", "2026-11-21T09:41:07Z");
  putPackage("a.recording", "2025-01-01T00:00:00Z");
  auto library = makeLibrary();
  library.rescan();
  EXPECT_THAT(namesOf(library), ElementsAre("c.recording", "b.recording", "a.recording"));
  std::int64_t sum = 0;
  for (const auto& item : library.items()) {
    EXPECT_GE(item.bytes, 10'000);
    sum += item.bytes;
  }
  EXPECT_EQ(library.totalBytes(), sum);
}

TEST_F(RecordingLibraryTest, onlyVisiblePackagesWithAnIndexShow) {
  putPackage("any stem.recording", "2026-11-20T09:41:07Z");
  putPackage("capital.Recording", "2026-11-20T09:41:07Z");
  putPackage("no extension", "2026-11-20T09:41:07Z");
  putPackage(".hidden.recording", "2026-11-20T09:41:07Z");
  directory_.put("root/crashed.recording/events.jsonl", "");
  directory_.put("root/damaged.recording/meta.json", "{");
  directory_.put("root/file.recording", "no directory");
  auto library = makeLibrary();
  library.rescan();
  EXPECT_THAT(namesOf(library), ElementsAre("any stem.recording"));
}

TEST_F(RecordingLibraryTest, aMissingRootIsAnEmptyLibrary) {
  auto library = makeLibrary();
  library.rescan();
  EXPECT_THAT(library.items(), IsEmpty());
  EXPECT_FALSE(fs::exists(library.root()));
}

TEST_F(RecordingLibraryTest, theItemsAreThoseOfTheLastScan) {
  putPackage("a.recording", "2026-11-20T09:41:07Z");
  auto library = makeLibrary();
  library.rescan();
  fs::remove_all(directory_ / "root/a.recording");
  EXPECT_EQ(library.items().size(), 1U);
  library.rescan();
  EXPECT_THAT(library.items(), IsEmpty());
  EXPECT_EQ(library.totalBytes(), 0);
}

TEST_F(RecordingLibraryTest, aNewRootIsStandardisedStoredAndScanned) {
  putPackage("a.recording", "2026-11-20T09:41:07Z");
  storeRoot(directory_ / "other");
  auto library = makeLibrary();
  library.setRoot(directory_ / "other/.././/root/");
  EXPECT_EQ(library.root(), directory_ / "root");
  EXPECT_EQ(defaults_.string(libraryPathKey), (directory_ / "root").native());
  EXPECT_EQ(UserDefaults(directory_ / "defaults.json").string(libraryPathKey),
            (directory_ / "root").native());
  EXPECT_THAT(namesOf(library), ElementsAre("a.recording"));
}

TEST_F(RecordingLibraryTest, aNewRootIsNotedInTheLog) {
  auto library = makeLibrary();
  auto& logger = log(LogCategory::library);
  logger.set_level(spdlog::level::info);
  testing::internal::CaptureStderr();
  library.setRoot(directory_ / "root");
  const auto lines = testing::internal::GetCapturedStderr();
  logger.set_level(spdlog::level::err);
  EXPECT_THAT(lines, testing::HasSubstr("library root -> " + (directory_ / "root").native()));
}

TEST_F(RecordingLibraryTest, aPathThatCannotBeStoredStillHolds) {
  auto library = makeLibrary();
  library.setRoot(directory_ / "\xFF");
  EXPECT_EQ(library.root(), directory_ / "\xFF");
  EXPECT_EQ(defaults_.string(libraryPathKey), (directory_ / "root").native());
}

TEST_F(RecordingLibraryTest, resettingStoresThePathOfTheDefault) {
  auto library = makeLibrary();
  EXPECT_FALSE(library.isDefaultRoot());
  library.resetRoot();
  EXPECT_TRUE(library.isDefaultRoot());
  EXPECT_EQ(defaults_.string(libraryPathKey), defaultRoot().native());
}

TEST_F(RecordingLibraryTest, theDefaultIsRecognisedInAnySpelling) {
  storeRoot(defaultRoot() / "x/../");
  EXPECT_TRUE(makeLibrary().isDefaultRoot());
}

TEST_F(RecordingLibraryTest, aChosenFolderBecomesTheRoot) {
  auto library = makeLibrary();
  chosenFolder_ = directory_ / "chosen";
  EXPECT_TRUE(library.chooseRoot());
  EXPECT_EQ(library.root(), directory_ / "chosen");
  EXPECT_THAT(
      requests_,
      ElementsAre(RecordingLibrary::FolderRequest{
          .start = directory_ / "root", .prompt = "选择", .message = "选择录制文件的保存位置"}));
}

TEST_F(RecordingLibraryTest, aCancelledChoiceChangesNothing) {
  auto library = makeLibrary();
  EXPECT_FALSE(library.chooseRoot());
  EXPECT_EQ(library.root(), directory_ / "root");
}

TEST_F(RecordingLibraryTest, theRootIsCreatedWithTheFoldersAboveIt) {
  storeRoot(directory_ / "new/deep/root");
  const auto library = makeLibrary();
  EXPECT_TRUE(library.ensureRoot());
  EXPECT_TRUE(fs::is_directory(directory_ / "new/deep/root"));
  EXPECT_TRUE(library.ensureRoot());
}

TEST_F(RecordingLibraryTest, aRootThatCannotBeCreatedIsReported) {
  directory_.put("file", "in the way");
  storeRoot(directory_ / "file/root");
  const auto library = makeLibrary();
  testing::internal::CaptureStderr();
  EXPECT_FALSE(library.ensureRoot());
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("com.ordel.vesk.library error: create root failed: "));
}

TEST_F(RecordingLibraryTest, aNewPackageLiesInTheRoot) {
  const auto library = makeLibrary();
  const auto url = library.newPackageURL(now);
  EXPECT_EQ(url.parent_path(), directory_ / "root");
  EXPECT_EQ(url, package::newPackageURL(directory_ / "root", now));
}

TEST_F(RecordingLibraryTest, aTrashedPackageLeavesTheListAndCanBeRestored) {
  putPackage("a.recording", "2026-11-20T09:41:07Z");
  putPackage("b.recording", "2026-11-21T09:41:07Z");
  auto library = makeLibrary();
  library.rescan();
  EXPECT_TRUE(library.trash(directory_ / "root/a.recording"));
  EXPECT_THAT(namesOf(library), ElementsAre("b.recording"));
  fs::rename(directory_ / "share/Trash/files/a.recording", directory_ / "root/a.recording");
  library.rescan();
  EXPECT_THAT(namesOf(library), ElementsAre("b.recording", "a.recording"));
}

TEST_F(RecordingLibraryTest, aPackageThatCannotBeTrashedStaysInTheList) {
  putPackage("a.recording", "2026-11-20T09:41:07Z");
  directory_.put("share/Trash/info", "not a folder");
  auto library = makeLibrary();
  library.rescan();
  testing::internal::CaptureStderr();
  EXPECT_FALSE(library.trash(directory_ / "root/a.recording"));
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("com.ordel.vesk.library error: trash failed: "));
  EXPECT_THAT(namesOf(library), ElementsAre("a.recording"));
  EXPECT_TRUE(fs::exists(directory_ / "root/a.recording/meta.json"));
}

TEST_F(RecordingLibraryTest, aThumbnailComesFromItsMaker) {
  const auto library = makeLibrary();
  EXPECT_EQ(library.thumbnail("/a.recording"), thumbnail_);
  EXPECT_THAT(thumbnailsOf_, ElementsAre("/a.recording"));
}

TEST_F(RecordingLibraryTest, observersLearnOfANewRootAndOfNewItems) {
  auto library = makeLibrary();
  int changes = 0;
  const auto subscription = library.onChange([&] { ++changes; });
  library.setRoot(directory_ / "empty");
  EXPECT_EQ(changes, 1) << "the root, and no items";
  putPackage("a.recording", "2026-11-20T09:41:07Z");
  library.setRoot(directory_ / "root");
  EXPECT_EQ(changes, 3) << "the root and the items";
}

TEST_F(RecordingLibraryTest, observersAreSparedWhatStaysTheSame) {
  putPackage("a.recording", "2026-11-20T09:41:07Z");
  auto library = makeLibrary();
  library.rescan();
  int changes = 0;
  const auto subscription = library.onChange([&] { ++changes; });
  library.setRoot(directory_ / "root");
  library.setRoot(directory_ / "root/");
  library.rescan();
  EXPECT_EQ(changes, 0);
}

TEST_F(RecordingLibraryTest, anObserverSeesTheNewValues) {
  putPackage("a.recording", "2026-11-20T09:41:07Z");
  auto library = makeLibrary();
  std::size_t count = 0;
  std::int64_t total = 0;
  const auto subscription = library.onChange([&] {
    count = library.items().size();
    total = library.totalBytes();
  });
  library.rescan();
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(total, library.items().front().bytes);
}

}  // namespace
}  // namespace vesk::package
