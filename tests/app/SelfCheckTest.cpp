#include <gtest/gtest.h>

#include "app/SelfCheck.h"
#include "motion/ReportText.h"

namespace vesk::app {

TEST(SelfCheck, printsTitleStepsAndVerdictBetweenRulers) {
  SelfCheck check(" 自检");
  check.step("一", {});
  check.step("二", {});
  const CheckOutcome outcome = check.finishWithList("全部成立");
  const std::string ruler = motion::ruler();
  EXPECT_EQ(outcome.text,
            ruler + "\n 自检\n" + ruler + "\n  ✓ 一\n  ✓ 二\n" + ruler + "\n  ✓ 全部成立\n");
  EXPECT_EQ(outcome.exitCode, 0);
}

TEST(SelfCheck, goesOnAfterAFailureAndListsThemAll) {
  SelfCheck check(" 自检");
  check.step("一", {"甲", "乙"});
  check.step("二", {});
  check.step("三", {"丙"});
  EXPECT_EQ(check.steps(), 3);
  EXPECT_EQ(check.passed(), 1);
  const CheckOutcome outcome = check.finishWithList("全部成立");
  EXPECT_TRUE(outcome.text.ends_with("  ✗ 一\n      甲\n      乙\n  ✓ 二\n  ✗ 三\n      丙\n" +
                                     motion::ruler() +
                                     "\n  ✗ 2 项不符：\n      · 一\n      · 三\n"));
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST(SelfCheck, aVerdictOfItsOwnKeepsMarkAndExitCode) {
  SelfCheck check(" 自检");
  check.step("一", {"甲"});
  const CheckOutcome outcome = check.finish("0/1");
  EXPECT_TRUE(outcome.text.ends_with("\n  ✗ 0/1\n"));
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST(SelfCheck, listsFailuresOfItsResultsOneByOne) {
  SelfCheck check(" 自检");
  check.result(true, "一");
  check.result(false, "二");
  check.collect("甲");
  check.collect("乙");
  check.line("三");
  EXPECT_EQ(check.steps(), 0);
  const CheckOutcome outcome = check.finishWithList("全部成立");
  EXPECT_TRUE(outcome.text.ends_with("\n  ✓ 一\n  ✗ 二\n三\n" + motion::ruler() +
                                     "\n  ✗ 2 项不符：\n      · 甲\n      · 乙\n"));
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST(SelfCheck, canStopWithoutAVerdict) {
  SelfCheck check(" 自检");
  check.line("一");
  const CheckOutcome outcome = check.stop(1);
  EXPECT_EQ(outcome.text, motion::ruler() + "\n 自检\n" + motion::ruler() + "\n一\n");
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST(SelfCheck, theRulerHasSixtyTwoCharacters) {
  EXPECT_EQ(motion::ruler().size(), 62 * std::string("─").size());
}

}  // namespace vesk::app
