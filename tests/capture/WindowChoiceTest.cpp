#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "capture/Geometry.h"
#include "capture/WindowChoice.h"

namespace vesk::capture {
namespace {

ScreenWindow window(std::uint32_t id, std::optional<std::string> title, std::string appName,
                    ScreenSize size = {.width = 640, .height = 480}) {
  return {.id = id,
          .title = std::move(title),
          .owner = ScreenWindow::Owner{.applicationID = "org.example." + appName,
                                       .applicationName = appName,
                                       .processID = 40},
          .frame = {.x = 5, .y = 6, .width = size.width, .height = size.height}};
}

std::vector<std::uint32_t> ids(const std::vector<WindowChoice>& choices) {
  std::vector<std::uint32_t> result;
  for (const auto& choice : choices) result.push_back(choice.id);
  return result;
}

using IDs = std::vector<std::uint32_t>;

TEST(WindowChoice, hasWhatThePageShows) {
  const auto choices = windowChoices({window(7, "信", "邮件")}, "");
  const WindowChoice expected{.id = 7,
                              .title = "信",
                              .appName = "邮件",
                              .frame = {.x = 5, .y = 6, .width = 640, .height = 480},
                              .pid = 40};
  EXPECT_EQ(choices, std::vector{expected});
}

TEST(WindowChoice, smallWindowsAreNotListed) {
  EXPECT_EQ(ids(windowChoices({window(1, "a", "app", {.width = 119, .height = 500}),
                               window(2, "b", "app", {.width = 120, .height = 90}),
                               window(3, "c", "app", {.width = 500, .height = 89})},
                              "")),
            (IDs{2}));
}

TEST(WindowChoice, theProgramsOwnWindowsAreNotListed) {
  const std::vector windows{window(1, "a", "vesk"), window(2, "b", "editor")};
  EXPECT_EQ(ids(windowChoices(windows, "org.example.vesk")), (IDs{2}));
}

TEST(WindowChoice, withoutANameOfItsOwnTheProgramLeavesNoWindowOut) {
  auto nameless = window(1, "a", "tool");
  nameless.owner->applicationID.clear();
  EXPECT_EQ(ids(windowChoices({nameless, window(2, "b", "vesk")}, "")), (IDs{1, 2}));
}

TEST(WindowChoice, windowsWithoutAnApplicationAreNotListed) {
  auto orphan = window(1, "a", "app");
  orphan.owner.reset();
  EXPECT_TRUE(windowChoices({orphan}, "").empty());
}

TEST(WindowChoice, anUntitledWindowBearsItsApplicationsName) {
  const auto choices = windowChoices({window(1, std::nullopt, "终端"), window(2, "", "终端")}, "");
  ASSERT_EQ(choices.size(), 2U);
  EXPECT_EQ(choices[0].title, "终端");
  EXPECT_EQ(choices[1].title, "终端");
}

TEST(WindowChoice, choicesAreSortedByApplicationAndTitleInPlainOrder) {
  EXPECT_EQ(ids(windowChoices(
                {window(1, "b", "editor"), window(2, "a", "editor"), window(3, "B", "editor"),
                 window(4, "z", "Browser"), window(5, "a", "编辑"), window(6, "b", "editor")},
                "")),
            (IDs{4, 3, 2, 1, 6, 5}));
}

}  // namespace
}  // namespace vesk::capture
