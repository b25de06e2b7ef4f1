#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <limits>
#include <thread>
#include <utility>

#include "package/EditDocument.h"
#include "package/EditDocumentCoding.h"
#include "package/FaultyCalls.h"
#include "package/RandomEditDocument.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;
using Call = FaultyCalls::Call;

constexpr Timestamp now{std::chrono::seconds(1795167667)};

EditDocument documentOf(std::uint64_t seed) {
  RandomEditDocument random(seed);
  auto document = random.document();
  document.segments = {random.segment(), random.segment(), random.segment()};
  return document;
}

std::string textOf(const EditDocument& document) {
  return encodeEditDocument(document).value();
}

std::vector<std::string> namesIn(const fs::path& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

/// The text of the directory's edit document, or nothing.
std::optional<std::string> savedText(const TemporaryDirectory& directory) {
  if (!fs::exists(directory / "edit.json")) return std::nullopt;
  return directory.contents("edit.json");
}

mode_t modeOf(const fs::path& file) {
  struct stat status{};
  EXPECT_EQ(::stat(file.c_str(), &status), 0);
  return status.st_mode & 07777;
}

/// Runs the body in a process of its own. The status as waitpid gives it.
template <typename Body>
int inChild(Body body) {
  const pid_t child = ::fork();
  if (child == 0) {
    body();
    ::_exit(0);
  }
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return status;
}

/// Gives up the rights that root has over every file.
void becomeOrdinaryUser() {
  constexpr uid_t nobody = 65534;
  if (::geteuid() == 0 && ::setuid(nobody) != 0) ::_exit(1);
}

/// The calls of an undisturbed save over a document.
std::vector<Call> callsOfASave() {
  const TemporaryDirectory directory;
  EXPECT_TRUE(documentOf(1).save(directory.path()));
  FaultyCalls calls;
  EXPECT_TRUE(documentOf(2).save(directory.path(), calls));
  return calls.calls();
}

TEST(EditDocumentSave, aSavedDocumentLoadsEqual) {
  const TemporaryDirectory directory;
  const auto document = documentOf(1);
  ASSERT_TRUE(document.save(directory.path()));
  const auto loaded = EditDocument::load(directory.path(), now);
  ASSERT_NE(loaded.ok(), nullptr);
  EXPECT_EQ(*loaded.ok(), document);
  EXPECT_EQ(directory.contents("edit.json"), textOf(document));
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("edit.json"));
}

TEST(EditDocumentSave, synchronizesTheFileBeforeItsNameAndTheNameAfter) {
  auto calls = callsOfASave();
  calls.erase(std::unique(calls.begin(), calls.end()), calls.end());
  EXPECT_THAT(calls, ElementsAre(Call::open, Call::lock, Call::write, Call::synchronize,
                                 Call::rename, Call::synchronize, Call::close));
}

enum class Moment { before, midway, after };

FaultyCalls callsThatEndTheProcess(std::size_t number, Moment moment) {
  FaultyCalls calls;
  const auto endHere = [number](std::size_t current, Call) {
    if (current == number) ::raise(SIGKILL);
    return 0;
  };
  if (moment == Moment::before) calls.before = endHere;
  if (moment == Moment::midway) calls.midway = endHere;
  if (moment == Moment::after) calls.after = endHere;
  return calls;
}

/// Ends a process in a save and looks at what is left.
void endASave(std::size_t number, Moment moment, bool hasOldFile) {
  const TemporaryDirectory directory;
  const auto older = documentOf(1);
  const auto newer = documentOf(2);
  if (hasOldFile) {
    ASSERT_TRUE(older.save(directory.path()));
  }
  const int status = inChild([&] {
    auto calls = callsThatEndTheProcess(number, moment);
    (void)newer.save(directory.path(), calls);
  });
  ASSERT_TRUE(WIFSIGNALED(status)) << "not reached";

  const auto loaded = EditDocument::load(directory.path(), now);
  if (loaded.none()) {
    EXPECT_FALSE(hasOldFile);
  } else {
    ASSERT_NE(loaded.ok(), nullptr);
    EXPECT_TRUE(*loaded.ok() == newer || (hasOldFile && *loaded.ok() == older));
  }
  const auto last = documentOf(3);
  EXPECT_TRUE(last.save(directory.path()));
  EXPECT_EQ(savedText(directory), textOf(last));
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("edit.json"));
}

TEST(EditDocumentSave, aProcessEndedAtAnyCallLeavesTheOldFileOrTheNew) {
  const auto calls = callsOfASave();
  ASSERT_GE(std::ranges::count(calls, Call::write), 3);
  for (std::size_t number = 0; number < calls.size(); ++number) {
    for (const bool hasOldFile : {false, true}) {
      SCOPED_TRACE(testing::Message() << "call " << number << (hasOldFile ? ", old file" : ""));
      endASave(number, Moment::before, hasOldFile);
      endASave(number, Moment::after, hasOldFile);
      if (calls.at(number) == Call::write) endASave(number, Moment::midway, hasOldFile);
    }
  }
}

TEST(EditDocumentSave, anErrorAtAnyCallKeepsTheOldFileAndLeavesNothingBeside) {
  const auto calls = callsOfASave();
  const auto rename = std::ranges::find(calls, Call::rename) - calls.begin();
  for (const int error : {ENOSPC, EIO, EACCES, EDQUOT}) {
    for (std::size_t number = 0; number < calls.size(); ++number) {
      SCOPED_TRACE(testing::Message() << "call " << number << ", error " << error);
      const TemporaryDirectory directory;
      const auto older = documentOf(1);
      const auto newer = documentOf(2);
      ASSERT_TRUE(older.save(directory.path()));
      FaultyCalls faulty;
      faulty.before = [&](std::size_t current, Call) { return current == number ? error : 0; };
      const auto saved = newer.save(directory.path(), faulty);
      // Without locks and without a directory that can be opened a save is still one, and a close
      // tells nothing new after the text was synchronised.
      const bool isHarmless = calls.at(number) == Call::lock || calls.at(number) == Call::close ||
                              (number == 0 && error == EACCES);
      EXPECT_EQ(saved.has_value(), isHarmless);
      if (!saved) {
        EXPECT_THAT(saved.error().message, HasSubstr("edit.json”："));
      }
      const bool isNew = isHarmless || number > static_cast<std::size_t>(rename);
      EXPECT_EQ(savedText(directory), textOf(isNew ? newer : older));
      EXPECT_THAT(namesIn(directory.path()), ElementsAre("edit.json"));
    }
  }
}

TEST(EditDocumentSave, aFullDiskMidwayKeepsTheOldFile) {
  const TemporaryDirectory directory;
  ASSERT_TRUE(documentOf(1).save(directory.path()));
  FaultyCalls calls;
  int writes = 0;
  calls.before = [&](std::size_t, Call call) {
    return call == Call::write && ++writes == 3 ? ENOSPC : 0;
  };
  const auto saved = documentOf(2).save(directory.path(), calls);
  ASSERT_FALSE(saved);
  EXPECT_EQ(saved.error().kind, PackageError::Kind::fileUnwritable);
  EXPECT_THAT(saved.error().message, HasSubstr("磁盘空间不足"));
  EXPECT_EQ(savedText(directory), textOf(documentOf(1)));
}

TEST(EditDocumentSave, aSignalAtAnyCallIsNoError) {
  const auto calls = callsOfASave();
  for (std::size_t number = 0; number < calls.size(); ++number) {
    if (calls.at(number) == Call::rename) continue;  // is never cut short
    const TemporaryDirectory directory;
    ASSERT_TRUE(documentOf(1).save(directory.path()));
    FaultyCalls faulty;
    faulty.before = [&](std::size_t current, Call) { return current == number ? EINTR : 0; };
    EXPECT_TRUE(documentOf(2).save(directory.path(), faulty)) << number;
    EXPECT_EQ(savedText(directory), textOf(documentOf(2)));
  }
}

TEST(EditDocumentSave, shortWritesAddUpToTheWholeText) {
  const TemporaryDirectory directory;
  FaultyCalls calls;
  calls.bytesAtOnce = 7;
  ASSERT_TRUE(documentOf(1).save(directory.path(), calls));
  EXPECT_EQ(savedText(directory), textOf(documentOf(1)));
}

TEST(EditDocumentSave, aNewFileHasTheModeOfTheMaskAndALaterOneThatOfTheOld) {
  const TemporaryDirectory directory;
  const mode_t mask = ::umask(027);
  ASSERT_TRUE(documentOf(1).save(directory.path()));
  EXPECT_EQ(modeOf(directory / "edit.json"), 0640U);
  for (const mode_t mode : {0600U, 0666U, 0444U}) {
    ASSERT_EQ(::chmod((directory / "edit.json").c_str(), mode), 0);
    ASSERT_TRUE(documentOf(2).save(directory.path()));
    EXPECT_EQ(modeOf(directory / "edit.json"), mode);
  }
  ::umask(mask);
}

TEST(EditDocumentSave, aModeThatCannotBeSetIsAnError) {
  const TemporaryDirectory directory;
  ASSERT_TRUE(documentOf(1).save(directory.path()));
  ASSERT_EQ(::chmod((directory / "edit.json").c_str(), 0666), 0);
  FaultyCalls calls;
  calls.before = [](std::size_t, Call call) { return call == Call::changeMode ? EPERM : 0; };
  EXPECT_FALSE(documentOf(2).save(directory.path(), calls));
  EXPECT_EQ(savedText(directory), textOf(documentOf(1)));
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("edit.json"));
}

TEST(EditDocumentSave, aDocumentThatCannotBeWrittenTouchesNothing) {
  const TemporaryDirectory directory;
  ASSERT_TRUE(documentOf(1).save(directory.path()));
  auto document = documentOf(2);
  document.followSpeed = std::numeric_limits<double>::quiet_NaN();
  const auto saved = document.save(directory.path());
  ASSERT_FALSE(saved);
  EXPECT_THAT(saved.error().message, HasSubstr("字段“followSpeed”不是有限的数字"));
  EXPECT_EQ(savedText(directory), textOf(documentOf(1)));
}

TEST(EditDocumentSave, aLinkIsReplacedAndWhatItLeadsToStays) {
  const TemporaryDirectory directory;
  const auto target = directory.put("private", "private");
  fs::create_directory(directory / "a.recording");
  fs::create_symlink(target, directory / "a.recording/edit.json");
  EXPECT_TRUE(EditDocument::load(directory / "a.recording", now).none());
  ASSERT_TRUE(documentOf(1).save(directory / "a.recording"));
  EXPECT_EQ(directory.contents("private"), "private");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(directory / "a.recording/edit.json")));
}

TEST(EditDocumentSave, aDirectoryOfThatNameOrNoPackageIsAnError) {
  const TemporaryDirectory directory;
  fs::create_directory(directory / "edit.json");
  EXPECT_FALSE(documentOf(1).save(directory.path()));
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("edit.json"));
  EXPECT_FALSE(documentOf(1).save(directory / "missing.recording"));
}

TEST(EditDocumentSave, aFileThatMayNotBeReadIsNotReplaced) {
  const TemporaryDirectory directory;
  ASSERT_EQ(::chmod(directory.path().c_str(), 0777), 0);
  const auto file = directory.put("edit.json", "secret");
  ASSERT_EQ(::chmod(file.c_str(), 0), 0);
  const int status = inChild([&] {
    becomeOrdinaryUser();
    if (!EditDocument::load(directory.path(), now).none()) ::_exit(2);
    const auto saved = documentOf(1).save(directory.path());
    if (saved || saved.error().message.find("没有权限读取原有内容") == std::string::npos) {
      ::_exit(3);
    }
  });
  EXPECT_EQ(status, 0);
  ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
  EXPECT_EQ(savedText(directory), "secret");
}

TEST(EditDocumentSave, leftoversAndOtherThingsInItsWayDoNotHinderIt) {
  const TemporaryDirectory directory;
  directory.put(".edit.json.saving-0", "half of a docu");
  directory.put("target", "target");
  fs::create_symlink("target", directory / ".edit.json.saving-1");
  FaultyCalls calls;
  bool isFirstLock = true;
  calls.before = [&](std::size_t, Call call) {  // the first leftover is in use
    return call == Call::lock && std::exchange(isFirstLock, false) ? EWOULDBLOCK : 0;
  };
  ASSERT_TRUE(documentOf(1).save(directory.path(), calls));
  EXPECT_THAT(
      namesIn(directory.path()),
      UnorderedElementsAre("edit.json", "target", ".edit.json.saving-0", ".edit.json.saving-1"));
  EXPECT_EQ(directory.contents("target"), "target");
  ASSERT_TRUE(documentOf(2).save(directory.path()));
  EXPECT_FALSE(fs::exists(directory / ".edit.json.saving-0"));
  EXPECT_EQ(savedText(directory), textOf(documentOf(2)));
}

TEST(EditDocumentSave, saversAtTheSameTimeLeaveOneWholeDocument) {
  const TemporaryDirectory directory;
  const std::array documents{documentOf(1), documentOf(2), documentOf(3)};
  ASSERT_TRUE(documents.front().save(directory.path()));
  std::atomic<int> failures = 0;
  std::atomic<int> running = static_cast<int>(documents.size());
  std::vector<std::jthread> savers;
  for (const auto& document : documents) {
    savers.emplace_back([&] {
      for (int i = 0; i < 50; ++i) failures += document.save(directory.path()) ? 0 : 1;
      --running;
    });
  }
  while (running > 0) {
    const auto loaded = EditDocument::load(directory.path(), now);
    ASSERT_NE(loaded.ok(), nullptr);
    EXPECT_TRUE(std::ranges::find(documents, *loaded.ok()) != documents.end());
  }
  savers.clear();
  EXPECT_EQ(failures, 0);
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("edit.json"));
}

TEST(EditDocumentLoad, noFileIsNone) {
  const TemporaryDirectory directory;
  EXPECT_TRUE(EditDocument::load(directory.path(), now).none());
  EXPECT_TRUE(EditDocument::load(directory / "missing", now).none());
}

TEST(EditDocumentLoad, whatIsNoFileOfThePackageIsNoneAndStays) {
  const TemporaryDirectory directory;
  ASSERT_EQ(::mkfifo((directory / "edit.json").c_str(), 0600), 0);
  EXPECT_TRUE(EditDocument::load(directory.path(), now).none());
  fs::remove(directory / "edit.json");
  fs::create_directory(directory / "edit.json");
  EXPECT_TRUE(EditDocument::load(directory.path(), now).none());
  EXPECT_THAT(namesIn(directory.path()), ElementsAre("edit.json"));
}

/// The backup that a load of this text made.
fs::path backupOf(const TemporaryDirectory& directory, std::string_view text) {
  directory.put("edit.json", text);
  const auto loaded = EditDocument::load(directory.path(), now);
  const auto* corrupt = loaded.corrupt();
  if (corrupt == nullptr || !corrupt->backup) return {};
  EXPECT_THAT(corrupt->error.message, HasSubstr("edit.json"));
  EXPECT_EQ(directory.contents("edit.json"), text);
  EXPECT_EQ(directory.contents(corrupt->backup->filename().native()), text);
  return *corrupt->backup;
}

TEST(EditDocumentLoad, aDamagedFileIsCorruptAndCopiedByteForByte) {
  const TemporaryDirectory directory;
  EXPECT_EQ(backupOf(directory, "{ 这不是 JSON"),
            directory / "edit.json.corrupt-2026-11-20T09-41-07Z");
  EXPECT_THAT(namesIn(directory.path()),
              UnorderedElementsAre("edit.json", "edit.json.corrupt-2026-11-20T09-41-07Z"));
}

TEST(EditDocumentLoad, noCopyOverwritesAnEarlierOne) {
  const TemporaryDirectory directory;
  const auto first = backupOf(directory, "1");
  const auto second = backupOf(directory, std::string_view("2\0\xFF", 3));
  const auto third = backupOf(directory, "");
  EXPECT_EQ(second.filename(), "edit.json.corrupt-2026-11-20T09-41-07Z-2");
  EXPECT_EQ(third.filename(), "edit.json.corrupt-2026-11-20T09-41-07Z-3");
  EXPECT_EQ(directory.contents(first.filename().native()), "1");
  EXPECT_EQ(directory.contents(second.filename().native()), std::string_view("2\0\xFF", 3));
}

TEST(EditDocumentLoad, aLinkInTheCopysPlaceIsNotWrittenThrough) {
  const TemporaryDirectory directory;
  directory.put("target", "target");
  fs::create_symlink("target", directory / "edit.json.corrupt-2026-11-20T09-41-07Z");
  fs::create_symlink("missing", directory / "edit.json.corrupt-2026-11-20T09-41-07Z-2");
  EXPECT_EQ(backupOf(directory, "1").filename(), "edit.json.corrupt-2026-11-20T09-41-07Z-3");
  EXPECT_EQ(directory.contents("target"), "target");
  EXPECT_FALSE(fs::exists(directory / "missing"));
}

TEST(EditDocumentLoad, theCopyIsNoMoreOpenThanTheFile) {
  const TemporaryDirectory directory;
  ASSERT_EQ(::chmod(directory.put("edit.json", "").c_str(), 0600), 0);
  EXPECT_EQ(modeOf(backupOf(directory, "1")), 0600U);
}

TEST(EditDocumentLoad, theCopySurvivesTheNextSave) {
  const TemporaryDirectory directory;
  const auto copy = backupOf(directory, "{ 这不是 JSON");
  ASSERT_TRUE(EditDocument().save(directory.path()));
  EXPECT_EQ(directory.contents(copy.filename().native()), "{ 这不是 JSON");
  ASSERT_NE(EditDocument::load(directory.path(), now).ok(), nullptr);
}

TEST(EditDocumentLoad, withoutACopyItIsCorruptAllTheSame) {
  const TemporaryDirectory directory;
  directory.put("edit.json", "{");
  ASSERT_EQ(::chmod(directory.path().c_str(), 0555), 0);
  const int status = inChild([&] {
    becomeOrdinaryUser();
    const auto loaded = EditDocument::load(directory.path(), now);
    if (loaded.corrupt() == nullptr || loaded.corrupt()->backup) ::_exit(2);
  });
  EXPECT_EQ(status, 0);
  ASSERT_EQ(::chmod(directory.path().c_str(), 0755), 0);
}

TEST(EditDocumentLoad, aFileBeyondAllSizeIsCorruptAndKeptWithoutBeingRead) {
  const TemporaryDirectory directory;
  fs::resize_file(directory.put("edit.json", "{"), std::uintmax_t{1} << 40);
  const auto loaded = EditDocument::load(directory.path(), now);
  ASSERT_NE(loaded.corrupt(), nullptr);
  EXPECT_THAT(loaded.corrupt()->error.message, HasSubstr("超过上限"));
  ASSERT_TRUE(loaded.corrupt()->backup);
  ASSERT_TRUE(EditDocument().save(directory.path()));
  EXPECT_EQ(fs::file_size(*loaded.corrupt()->backup), std::uintmax_t{1} << 40);
  ASSERT_NE(EditDocument::load(directory.path(), now).ok(), nullptr);
}

}  // namespace
}  // namespace vesk::package
