#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "app/ProgressLine.h"

namespace vesk::app {
namespace {

using namespace std::chrono_literals;
using Form = ProgressLine::Form;
using Clock = ProgressLine::Clock;

/// A stream that keeps what is written to it.
class Page {
 public:
  Page() : stream_(open_memstream(&text_, &size_)) {}
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;
  ~Page() {
    std::fclose(stream_);
    std::free(text_);  // NOLINT: the stream allocated it
  }
  std::FILE* stream() const { return stream_; }
  std::string text() const {
    std::fflush(stream_);
    return {text_, size_};
  }

 private:
  char* text_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
};

class ProgressLineTest : public testing::Test {
 protected:
  ProgressLine line(Form form) const { return {page_.stream(), form, 60.0, start_}; }

  Page page_;
  Clock::time_point start_{1h};
};

std::string repeated(std::string_view text, int count) {
  std::string result;
  for (int index = 0; index < count; ++index) result += text;
  return result;
}

TEST_F(ProgressLineTest, aFileGetsPlainLines) {
  std::FILE* file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(ProgressLine::suitableForm(file), Form::plain);
  std::fclose(file);
}

TEST_F(ProgressLineTest, thePlainFormHasOneLineForEachTenth) {
  ProgressLine progress = line(Form::plain);
  for (int frame = 0; frame <= 600; ++frame) progress.show(frame / 600.0, start_);
  progress.end();
  std::string expected;
  for (int tenth = 1; tenth <= 10; ++tenth) {
    expected += "导出中 " + std::to_string(10 * tenth) + "%\n";
  }
  EXPECT_EQ(page_.text(), expected);
}

TEST_F(ProgressLineTest, thePlainFormLeavesOutTheTenthsThatItJumpsOver) {
  ProgressLine progress = line(Form::plain);
  for (const double share : {0.0, 0.05, 0.55, 0.59, 1.0}) progress.show(share, start_);
  EXPECT_EQ(page_.text(), "导出中 50%\n导出中 100%\n");
}

TEST_F(ProgressLineTest, aTenthThatFallsShortByARoundingCounts) {
  ProgressLine progress = line(Form::plain);
  double sum = 0;
  for (int tenth = 0; tenth < 8; ++tenth) sum += 0.1;
  ASSERT_LT(sum, 0.8);
  progress.show(sum, start_);
  EXPECT_EQ(page_.text(), "导出中 80%\n");
}

TEST_F(ProgressLineTest, aShareBeyondTheEndIsTheEnd) {
  ProgressLine progress = line(Form::plain);
  progress.show(1.7, start_);
  EXPECT_EQ(page_.text(), "导出中 100%\n");
}

TEST_F(ProgressLineTest, aShareThatFallsBackShowsNothing) {
  ProgressLine progress = line(Form::plain);
  for (const double share : {0.5, 0.2, -1.0, 0.5}) progress.show(share, start_);
  EXPECT_EQ(page_.text(), "导出中 50%\n");
}

TEST_F(ProgressLineTest, theRewrittenFormHasBarPercentageSpeedAndTimeLeft) {
  ProgressLine progress = line(Form::rewritten);
  progress.show(0.5, start_ + 10s);
  EXPECT_EQ(page_.text(), "\r导出中 " + repeated("█", 15) + repeated("░", 15) +
                              "  50%  3.0× 实时  剩余 10 秒\x1b[K");
}

TEST_F(ProgressLineTest, theRewrittenFormShowsStartAndEnd) {
  ProgressLine progress = line(Form::rewritten);
  progress.show(0, start_ + 1s);
  const std::string atStart = page_.text();
  EXPECT_EQ(atStart, "\r导出中 " + repeated("░", 30) + "   0%  0.0× 实时  剩余 0 秒\x1b[K");
  progress.show(1, start_ + 30s);
  EXPECT_EQ(page_.text().substr(atStart.size()),
            "\r导出中 " + repeated("█", 30) + " 100%  2.0× 实时  剩余 0 秒\x1b[K");
}

TEST_F(ProgressLineTest, theRewrittenFormChangesWithEachPerCent) {
  ProgressLine progress = line(Form::rewritten);
  for (int frame = 0; frame <= 1000; ++frame) progress.show(frame / 1000.0, start_ + 1s);
  const std::string text = page_.text();
  EXPECT_EQ(std::ranges::count(text, '\r'), 101);
  EXPECT_EQ(std::ranges::count(text, '\n'), 0);
}

TEST_F(ProgressLineTest, theFirstInstantHasAFiniteSpeed) {
  ProgressLine progress = line(Form::rewritten);
  progress.show(0.01, start_);
  EXPECT_THAT(page_.text(), testing::HasSubstr("  600.0× 实时  剩余 0 秒"));
}

TEST_F(ProgressLineTest, theEndLeavesARewrittenLineOnce) {
  ProgressLine progress = line(Form::rewritten);
  progress.end();
  EXPECT_EQ(page_.text(), "");
  progress.show(0.3, start_ + 1s);
  const std::size_t shown = page_.text().size();
  progress.end();
  progress.end();
  EXPECT_EQ(page_.text().substr(shown), "\n");
}

}  // namespace
}  // namespace vesk::app
