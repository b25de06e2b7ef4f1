#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/window/WindowFlags.h"

namespace vesk::app {
namespace {

using Category = editor::EditorUIState::Category;

WindowFlags parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "vesk");
  return windowFlags(CommandLine(arguments));
}

TEST(WindowFlags, withoutAnyNothingIsAskedFor) {
  EXPECT_EQ(parse({}), WindowFlags{});
  EXPECT_EQ(parse({}).mode, std::nullopt);
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

TEST(WindowFlags, theirArgumentsAskForTheSame) {
  EXPECT_EQ(arguments({}), std::vector<std::string>());
  const WindowFlags all{.mode = RootMode::edit,
                        .openCategory = Category::pip,
                        .seek = -0.1,
                        .editPoke = true,
                        .package = "/录制/录制 1.recording"};
  EXPECT_EQ(arguments(all),
            (std::vector<std::string>{"--edit", "--open", "画中画", "--seek", "-0.1", "--edit-poke",
                                      "--package", "/录制/录制 1.recording"}));
  for (const WindowFlags& flags :
       {all, WindowFlags{}, WindowFlags{.mode = RootMode::library, .seek = 1.0 / 3},
        WindowFlags{.package = "/a/--edit"}}) {
    const std::vector<std::string> texts = arguments(flags);
    std::vector<const char*> pointers;
    for (const std::string& text : texts) pointers.push_back(text.c_str());
    EXPECT_EQ(parse(pointers), flags);
  }
}

TEST(WindowFlags, theScriptedEditIsOffUnlessAskedFor) {
  EXPECT_FALSE(parse({}).editPoke);
  EXPECT_TRUE(parse({"--edit-poke"}).editPoke);
}

}  // namespace
}  // namespace vesk::app
