#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "app/window/WindowFlags.h"

namespace vesk::app {
namespace {

using Category = editor::EditorUIState::Category;

WindowFlags parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "vesk");
  return windowFlags(CommandLine(arguments));
}

TEST(WindowFlags, withoutAnyTheRecordPageComesFirst) {
  EXPECT_EQ(parse({}), WindowFlags{});
  EXPECT_EQ(parse({}).mode, RootMode::record);
}

TEST(WindowFlags, aPageCanBeAskedForAndEditWins) {
  EXPECT_EQ(parse({"--library"}).mode, RootMode::library);
  EXPECT_EQ(parse({"--edit"}).mode, RootMode::edit);
  EXPECT_EQ(parse({"--library", "--edit"}).mode, RootMode::edit);
  EXPECT_EQ(parse({"--edit", "--library"}).mode, RootMode::edit);
}

TEST(WindowFlags, openNamesACategory) {
  EXPECT_EQ(parse({"--open", "画中画"}).openCategory, Category::pip);
  EXPECT_EQ(parse({"--open", "不存在"}).openCategory, std::nullopt);
  EXPECT_EQ(parse({"--open"}).openCategory, std::nullopt);
}

TEST(WindowFlags, seekTakesANumberOnly) {
  EXPECT_EQ(parse({"--seek", "3.5"}).seek, 3.5);
  for (const char* const value : {"abc", "3s", "nan", "inf", ""}) {
    EXPECT_EQ(parse({"--seek", value}).seek, std::nullopt) << value;
  }
  EXPECT_EQ(parse({"--seek"}).seek, std::nullopt);
}

TEST(WindowFlags, aPackageIsNamedFromTheRoot) {
  EXPECT_EQ(parse({"--package", "/a/b.recording"}).package, "/a/b.recording");
  EXPECT_EQ(parse({"--package", "b.recording"}).package,
            std::filesystem::current_path() / "b.recording");
  EXPECT_EQ(parse({"--package", ""}).package, std::nullopt);
  EXPECT_EQ(parse({"--package"}).package, std::nullopt);
}

TEST(WindowFlags, theScriptedEditIsOffUnlessAskedFor) {
  EXPECT_FALSE(parse({}).editPoke);
  EXPECT_TRUE(parse({"--edit-poke"}).editPoke);
}

}  // namespace
}  // namespace vesk::app
