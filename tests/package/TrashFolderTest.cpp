#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "package/TemporaryDirectory.h"
#include "package/TrashFolder.h"

namespace vesk::package {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr Timestamp deletionDate{std::chrono::seconds(1795167667)};

/// A home, and beside it a directory "volume" that passes for another mounted file system.
class TrashFolderTest : public testing::Test {
 protected:
  TrashFolderTest() { fs::create_directories(volume_); }

  TrashFolder trashFolder(std::uint32_t userID = ::getuid()) const {
    return TrashFolder({.dataHome = dataHome_,
                        .userID = userID,
                        .mountOf = [this](const fs::path& path) { return mountOfTest(path); }});
  }

  /// A package at this place below the test's directory.
  fs::path putPackage(const std::string& name) const {
    directory_.put(name + "/meta.json", "{}");
    directory_.put(name + "/screen.mov", "picture of " + name);
    return directory_ / name;
  }

  static std::string contents(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  static std::vector<std::string> namesIn(const fs::path& directory) {
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(directory, ignored)) {
      names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
  }

  fs::path homeTrash() const { return dataHome_ / "Trash"; }
  fs::path sharedTrash() const { return volume_ / ".Trash"; }
  fs::path ownTrash() const { return volume_ / (".Trash-" + std::to_string(::getuid())); }

  void expectUntouched(const fs::path& package) const {
    EXPECT_EQ(contents(package / "meta.json"), "{}");
    EXPECT_THAT(namesIn(homeTrash() / "files"), IsEmpty());
    EXPECT_THAT(namesIn(homeTrash() / "info"), IsEmpty());
  }

  TemporaryDirectory directory_;
  fs::path dataHome_ = directory_ / "home/share";
  fs::path volume_ = directory_ / "volume";

 private:
  std::optional<Mount> mountOfTest(const fs::path& path) const {
    if (!fs::exists(path)) return std::nullopt;
    const auto relative = path.lexically_relative(volume_).native();
    return Mount{.device = relative.starts_with("..") ? 1U : 2U, .number = 0};
  }
};

/// What a file manager reads from an info file: the place that its path stands for.
fs::path notedPlace(const std::string& info) {
  const auto start = info.find("\nPath=") + 6;
  const auto encoded = info.substr(start, info.find('\n', start) - start);
  std::string path;
  for (std::size_t at = 0; at < encoded.size(); ++at) {
    if (encoded[at] == '%') {
      path += static_cast<char>(std::stoi(encoded.substr(at + 1, 2), nullptr, 16));
      at += 2;
    } else {
      path += encoded[at];
    }
  }
  return path;
}

TEST_F(TrashFolderTest, aPackageOfTheHomeGoesIntoTheHomeTrash) {
  const auto package = putPackage("videos/take.recording");
  const auto place = trashFolder().take(package, deletionDate);
  ASSERT_TRUE(place) << place.error().message;
  EXPECT_EQ(*place, homeTrash() / "files/take.recording");
  EXPECT_EQ(contents(*place / "screen.mov"), "picture of videos/take.recording");
  EXPECT_FALSE(fs::exists(package));

  const auto info = contents(homeTrash() / "info/take.recording.trashinfo");
  EXPECT_TRUE(info.starts_with("[Trash Info]\nPath=/"));
  EXPECT_THAT(info, HasSubstr("\nDeletionDate=2026-11-"));
  EXPECT_EQ(notedPlace(info), fs::canonical(directory_.path()) / "videos/take.recording");
}

TEST_F(TrashFolderTest, theTrashIsPrivate) {
  ASSERT_TRUE(trashFolder().take(putPackage("take.recording"), deletionDate));
  for (const auto& made : {dataHome_, homeTrash(), homeTrash() / "files", homeTrash() / "info"}) {
    EXPECT_EQ(fs::status(made).permissions(), fs::perms::owner_all) << made;
  }
}

TEST_F(TrashFolderTest, aTakenNameGetsANumber) {
  for (const char* expected : {"take.recording", "take 2.recording", "take 3.recording"}) {
    const auto place = trashFolder().take(putPackage("take.recording"), deletionDate);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->filename(), expected);
    EXPECT_TRUE(fs::exists(homeTrash() / "info" / (std::string(expected) + ".trashinfo")));
  }
}

TEST_F(TrashFolderTest, nothingInTheTrashIsReplaced) {
  directory_.put("home/share/Trash/files/take.recording", "lacks its info file");
  directory_.put("home/share/Trash/info/take 2.recording.trashinfo", "lacks its file");
  fs::create_directories(homeTrash() / "files/take 3.recording");
  const auto place = trashFolder().take(putPackage("take.recording"), deletionDate);
  ASSERT_TRUE(place);
  EXPECT_EQ(place->filename(), "take 4.recording");
  EXPECT_EQ(directory_.contents("home/share/Trash/files/take.recording"), "lacks its info file");
  EXPECT_THAT(namesIn(homeTrash() / "info"),
              testing::ElementsAre("take 2.recording.trashinfo", "take 4.recording.trashinfo"));
}

TEST_F(TrashFolderTest, anyNameComesBackFromTheNotedPath) {
  for (const std::string name :
       {"my take.recording", "100%.recording", "line\nfeed.recording", "录制 一.recording",
        "\xFF\xFE.recording", "=;#.recording", "no extension", ".hidden"}) {
    const auto package = putPackage(name);
    const auto place = trashFolder().take(package, deletionDate);
    ASSERT_TRUE(place) << name;
    auto infoName = place->filename();
    infoName += ".trashinfo";
    const auto noted = notedPlace(contents(homeTrash() / "info" / infoName));
    fs::rename(*place, noted);
    EXPECT_EQ(contents(package / "screen.mov"), "picture of " + name);
    fs::remove_all(package);
  }
}

TEST_F(TrashFolderTest, aNameTooLongForItsInfoFileIsCut) {
  std::string name;
  while (name.size() + 10 <= 255) name += "录";
  name = name.substr(0, 240) + ".recording";
  ASSERT_GT(name.size(), 245U);
  for (int count = 0; count < 2; ++count) {
    const auto place = trashFolder().take(putPackage(name), deletionDate);
    ASSERT_TRUE(place) << place.error().message;
    EXPECT_EQ(place->extension(), ".recording");
    EXPECT_LE(place->filename().native().size(), 245U);
  }
}

TEST_F(TrashFolderTest, aSlashBehindTheNameChangesNothing) {
  const auto package = putPackage("take.recording");
  const auto place = trashFolder().take(package / "", deletionDate);
  ASSERT_TRUE(place);
  EXPECT_EQ(place->filename(), "take.recording");
}

TEST_F(TrashFolderTest, aLinkIsTrashedItself) {
  const auto package = putPackage("take.recording");
  fs::create_directory_symlink(package, directory_ / "link.recording");
  const auto place = trashFolder().take(directory_ / "link.recording", deletionDate);
  ASSERT_TRUE(place);
  EXPECT_TRUE(fs::is_symlink(*place));
  EXPECT_TRUE(fs::exists(package / "meta.json"));
}

TEST_F(TrashFolderTest, theNotedPlaceIsFreeOfLinks) {
  putPackage("real/take.recording");
  fs::create_directory_symlink(directory_ / "real", directory_ / "videos");
  ASSERT_TRUE(trashFolder().take(directory_ / "videos/take.recording", deletionDate));
  EXPECT_EQ(notedPlace(contents(homeTrash() / "info/take.recording.trashinfo")),
            fs::canonical(directory_.path()) / "real/take.recording");
}

TEST_F(TrashFolderTest, sizesOfDirectoriesAreNoted) {
  ASSERT_TRUE(trashFolder().take(putPackage("a.recording"), deletionDate));
  ASSERT_TRUE(trashFolder().take(putPackage("b c.recording"), deletionDate));
  const auto sizes = contents(homeTrash() / "directorysizes");
  EXPECT_THAT(sizes, testing::MatchesRegex("[0-9]+ [0-9]+ a.recording\n"
                                           "[0-9]+ [0-9]+ b%20c.recording\n"));
  struct stat info{};
  ASSERT_EQ(::stat((homeTrash() / "info/a.recording.trashinfo").c_str(), &info), 0);
  EXPECT_THAT(sizes, HasSubstr(" " + std::to_string(info.st_mtime) + " a.recording\n"));
}

TEST_F(TrashFolderTest, aPackageThatIsMissingIsAnError) {
  const auto place = trashFolder().take(directory_ / "missing.recording", deletionDate);
  ASSERT_FALSE(place);
  EXPECT_EQ(place.error().message, "无法把“" + (directory_ / "missing.recording").native() +
                                       "”移到废纸篓：文件或文件夹不存在。");
  EXPECT_FALSE(fs::exists(homeTrash()));
  EXPECT_FALSE(trashFolder().take("/no/such/folder/take.recording", deletionDate));
}

TEST_F(TrashFolderTest, withoutAnInfoFolderThePackageStays) {
  directory_.put("home/share/Trash/info", "not a folder");
  const auto package = putPackage("take.recording");
  EXPECT_FALSE(trashFolder().take(package, deletionDate));
  EXPECT_EQ(contents(package / "meta.json"), "{}");
  EXPECT_EQ(directory_.contents("home/share/Trash/info"), "not a folder");
}

TEST_F(TrashFolderTest, withoutAHomeThePackageStays) {
  directory_.put("home", "not a folder");
  const auto package = putPackage("take.recording");
  EXPECT_FALSE(trashFolder().take(package, deletionDate));
  expectUntouched(package);
}

TEST_F(TrashFolderTest, aTrashCannotTakeItself) {
  const auto inside = putPackage("home/share/Trash/files/take.recording");
  const auto place = trashFolder().take(directory_ / "home", deletionDate);
  ASSERT_FALSE(place);
  EXPECT_TRUE(fs::exists(inside / "meta.json"));
  EXPECT_THAT(namesIn(homeTrash() / "info"), IsEmpty());
}

TEST_F(TrashFolderTest, onAnotherFileSystemTheUsersOwnTrashIsMade) {
  const auto package = putPackage("volume/deep/take.recording");
  const auto place = trashFolder().take(package, deletionDate);
  ASSERT_TRUE(place) << place.error().message;
  EXPECT_EQ(*place, ownTrash() / "files/take.recording");
  EXPECT_EQ(fs::status(ownTrash()).permissions(), fs::perms::owner_all);
  EXPECT_FALSE(fs::exists(homeTrash()));

  const auto info = contents(ownTrash() / "info/take.recording.trashinfo");
  EXPECT_THAT(info, HasSubstr("\nPath=deep/take.recording\n"));
  fs::rename(*place, volume_ / notedPlace(info));
  EXPECT_TRUE(fs::exists(package / "meta.json"));
}

TEST_F(TrashFolderTest, aSafeSharedTrashIsPreferred) {
  fs::create_directory(sharedTrash());
  ASSERT_EQ(::chmod(sharedTrash().c_str(), 01777), 0);
  const auto place = trashFolder().take(putPackage("volume/take.recording"), deletionDate);
  ASSERT_TRUE(place);
  EXPECT_EQ(*place, sharedTrash() / std::to_string(::getuid()) / "files/take.recording");
  EXPECT_FALSE(fs::exists(ownTrash()));
}

TEST_F(TrashFolderTest, aSharedTrashWithoutTheStickyBitIsNotUsed) {
  fs::create_directory(sharedTrash());
  ASSERT_EQ(::chmod(sharedTrash().c_str(), 0777), 0);
  const auto place = trashFolder().take(putPackage("volume/take.recording"), deletionDate);
  ASSERT_TRUE(place);
  EXPECT_EQ(*place, ownTrash() / "files/take.recording");
  EXPECT_THAT(namesIn(sharedTrash()), IsEmpty());
}

TEST_F(TrashFolderTest, aSharedTrashThatIsALinkIsNotUsed) {
  const auto target = directory_ / "volume/elsewhere";
  fs::create_directory(target);
  ASSERT_EQ(::chmod(target.c_str(), 01777), 0);
  fs::create_directory_symlink(target, sharedTrash());
  const auto place = trashFolder().take(putPackage("volume/take.recording"), deletionDate);
  ASSERT_TRUE(place);
  EXPECT_EQ(*place, ownTrash() / "files/take.recording");
  EXPECT_THAT(namesIn(target), IsEmpty());
}

TEST_F(TrashFolderTest, aSharedTrashThatHasNoRoomForTheUserIsPassedOver) {
  fs::create_directory(sharedTrash());
  ASSERT_EQ(::chmod(sharedTrash().c_str(), 01777), 0);
  directory_.put("volume/.Trash/" + std::to_string(::getuid()), "in the way");
  const auto place = trashFolder().take(putPackage("volume/take.recording"), deletionDate);
  ASSERT_TRUE(place);
  EXPECT_EQ(*place, ownTrash() / "files/take.recording");
}

TEST_F(TrashFolderTest, anOwnTrashThatIsALinkIsNotUsed) {
  const auto target = directory_ / "volume/elsewhere";
  fs::create_directory(target);
  fs::create_directory_symlink(target, ownTrash());
  const auto package = putPackage("volume/take.recording");
  const auto place = trashFolder().take(package, deletionDate);
  ASSERT_FALSE(place);
  EXPECT_THAT(place.error().message, HasSubstr("它所在的磁盘上没有可用的废纸篓"));
  expectUntouched(package);
  EXPECT_THAT(namesIn(target), IsEmpty());
}

TEST_F(TrashFolderTest, aTrashOfAnotherUserIsNotUsed) {
  const auto stranger = ::getuid() + 1;
  fs::create_directory(volume_ / (".Trash-" + std::to_string(stranger)));
  const auto package = putPackage("volume/take.recording");
  EXPECT_FALSE(trashFolder(stranger).take(package, deletionDate));
  expectUntouched(package);
}

/// A directory in the shared memory, a file system beside the temporary one where both exist. Takes
/// the trash at its top away if that is new.
class SharedMemoryFolder {
 public:
  SharedMemoryFolder() : hadTrash_(fs::exists(trash())) {
    std::string pattern = "/dev/shm/vesk-trash-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no shared memory");
    path_ = pattern;
  }
  SharedMemoryFolder(const SharedMemoryFolder&) = delete;
  SharedMemoryFolder& operator=(const SharedMemoryFolder&) = delete;
  ~SharedMemoryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    if (!hadTrash_) fs::remove_all(trash(), ignored);
  }

  const fs::path& path() const { return path_; }
  static fs::path trash() { return "/dev/shm/.Trash-" + std::to_string(::getuid()); }

 private:
  bool hadTrash_;
  fs::path path_;
};

TEST(TrashFolderOnRealMounts, aPackageStaysOnItsFileSystem) {
  const TemporaryDirectory home;
  const SharedMemoryFolder volume;
  const auto package = volume.path() / (volume.path().filename().native() + ".recording");
  fs::create_directory(package);
  const bool isOneMount = mountOf(volume.path()) == mountOf(home.path());

  const TrashFolder trash(
      {.dataHome = home / "share", .userID = ::getuid(), .mountOf = package::mountOf});
  const auto place = trash.take(package, deletionDate);
  ASSERT_TRUE(place) << place.error().message;
  const auto bin = isOneMount ? home / "share/Trash" : SharedMemoryFolder::trash();
  EXPECT_EQ(*place, bin / "files" / package.filename());
  EXPECT_TRUE(fs::is_directory(*place));
  EXPECT_FALSE(fs::exists(package));
  EXPECT_EQ(fs::exists(home / "share/Trash"), isOneMount);

  fs::remove_all(*place);
  fs::remove(bin / "info" / (package.filename().native() + ".trashinfo"));
}

/// The home is believed to lie on the package's mount, and may not.
TEST(TrashFolderOnRealMounts, whatCannotBeRenamedStaysAndLeavesNoInfo) {
  const TemporaryDirectory home;
  const SharedMemoryFolder volume;
  const auto package = volume.path() / "take.recording";
  fs::create_directory(package);
  const bool isOneMount = mountOf(volume.path()) == mountOf(home.path());

  const TrashFolder trash({.dataHome = home / "share",
                           .userID = ::getuid(),
                           .mountOf = [](const fs::path&) { return Mount{}; }});
  const auto place = trash.take(package, deletionDate);
  EXPECT_EQ(place.has_value(), isOneMount);
  EXPECT_EQ(fs::exists(package), !isOneMount);
  EXPECT_EQ(fs::is_empty(home / "share/Trash/info"), !isOneMount);
}

TEST(Mount, isTheSameAllOverADirectoryTree) {
  const TemporaryDirectory directory;
  directory.put("below/file", "");
  ASSERT_TRUE(mountOf(directory.path()));
  EXPECT_EQ(mountOf(directory / "below"), mountOf(directory.path()));
  EXPECT_EQ(mountOf(directory / "missing"), std::nullopt);
  EXPECT_NE(mountOf("/proc"), mountOf(directory.path()));
}

}  // namespace
}  // namespace vesk::package
