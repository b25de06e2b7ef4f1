#include <gtest/gtest.h>

#include <array>

#include "app/PackageLocator.h"
#include "package/TemporaryDirectory.h"

namespace vesk::app {
namespace {

template <typename... Arguments>
CommandLine lineOf(Arguments... arguments) {
  return CommandLine(std::array<const char*, 1 + sizeof...(arguments)>{"vesk", arguments...});
}

}  // namespace

TEST(PackageLocator, aNamedPackageIsTakenUntestedAndTheLibraryLeftAlone) {
  const auto noLibrary = []() -> std::filesystem::path {
    ADD_FAILURE() << "asked for the library";
    return {};
  };
  EXPECT_EQ(findPackage(lineOf("--package", "not/there"), noLibrary), "not/there");
}

TEST(PackageLocator, theNewestPackageOfTheLibraryIsTheDefault) {
  const package::TemporaryDirectory library;
  for (const char* name : {"20260101-120000.recording", "20260301-120000.recording",
                           "20260201-120000.recording", "20270101-120000.movie"}) {
    std::filesystem::create_directory(library / name);
  }
  const auto root = [&] { return library.path(); };
  EXPECT_EQ(findPackage(lineOf(), root), library / "20260301-120000.recording");
  EXPECT_EQ(findPackage(lineOf("--package"), root), library / "20260301-120000.recording")
      << "a flag without its value counts as absent";
}

TEST(PackageLocator, anEmptyOrAbsentLibraryHasNoPackage) {
  const package::TemporaryDirectory library;
  EXPECT_FALSE(findPackage(lineOf(), [&] { return library.path(); }));
  EXPECT_FALSE(findPackage(lineOf(), [&] { return library / "nowhere"; }));
}

}  // namespace vesk::app
