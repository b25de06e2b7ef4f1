#include <gtest/gtest.h>

#include <algorithm>

#include "capture/x11/ScreenStage.h"

namespace vesk::capture::x11::test {
namespace {

using media::PixelRect;
using Process = PaintingClient::Process;

constexpr std::uint32_t red = 0xC02010;
constexpr std::uint32_t green = 0x10B040;
constexpr std::uint32_t blue = 0x2040D0;
constexpr std::uint32_t grey = 0x808080;
constexpr std::uint32_t magenta = 0xFF00FF;  // of our own windows
constexpr std::uint32_t opaque = 0xFF000000;
constexpr PixelRect whole{.width = 320, .height = 240};

/// A screen of 320×240 with a grey background, a source, another program, and this one.
class OwnWindows : public ::testing::TestWithParam<bool> {
 protected:
  OwnWindows() {
    other_.setBackground(grey);
    source_ = std::move(X11ScreenSource::open(display_.name()).value());
  }

  std::unique_ptr<Watched> watch(const PixelRect& rect = whole) {
    return std::make_unique<Watched>(
        *source_,
        ScreenRequest{.subject = ScreenRequest::Area{{.x = static_cast<double>(rect.x),
                                                      .y = static_cast<double>(rect.y),
                                                      .width = static_cast<double>(rect.width),
                                                      .height = static_cast<double>(rect.height)}},
                      .size = {.width = rect.width, .height = rect.height}});
  }

  static void expectNeverOwn(const std::vector<KeptFrame>& frames) {
    for (const KeptFrame& frame : frames) {
      ASSERT_EQ(std::ranges::count(frame.pixels, opaque | magenta), 0);
    }
  }

  TestDisplay display_{{.width = 320, .height = 240}};
  PaintingClient other_{display_.name(), Process::another};
  PaintingClient own_{display_.name(), Process::own};
  std::unique_ptr<X11ScreenSource> source_;
};

TEST_F(OwnWindows, areReplacedByExactlyWhatLiesBeneath) {
  other_.open({.x = 20, .y = 20, .width = 100, .height = 100}, red);
  other_.open({.x = 60, .y = 60, .width = 100, .height = 100}, green);
  const auto stream = watch();
  ASSERT_TRUE(stream->shows(60, 60, green));
  const KeptFrame before = stream->picture();
  own_.open({.x = 40, .y = 40, .width = 150, .height = 50}, magenta);
  own_.open({.x = 100, .y = 10, .width = 10, .height = 200}, magenta);
  const auto mark = stream->mark();
  other_.drawOnScreen({.x = 0, .y = 0, .width = 1, .height = 1}, blue);
  ASSERT_TRUE(stream->shows(0, 0, blue, mark));
  KeptFrame after = stream->picture();
  after.pixels[0] = before.pixels[0];
  EXPECT_EQ(after.pixels, before.pixels);
}

TEST_F(OwnWindows, thatWereThereBeforeTheStreamAreHiddenAsWell) {
  other_.open({.x = 20, .y = 20, .width = 100, .height = 100}, red);
  own_.open({.x = 100, .y = 100, .width = 100, .height = 100}, magenta);
  const auto stream = watch();
  const KeptFrame frame = stream->picture();
  expectNeverOwn({frame});
  EXPECT_EQ(frame.at(110, 110), opaque | red);
  EXPECT_EQ(frame.at(120, 120), opaque | grey);
}

TEST_F(OwnWindows, areNeverSeenWhileTheyComeMoveAndGo) {
  other_.open({.x = 20, .y = 20, .width = 100, .height = 100}, red);
  const auto stream = watch();
  for (int i = 0; i < 40; ++i) {
    const auto window = own_.open({.x = i, .y = i, .width = 80, .height = 60}, magenta);
    std::this_thread::sleep_for(std::chrono::milliseconds{7});
    own_.place(window, {.x = 2 * i, .y = i, .width = 90, .height = 50});
    other_.drawOnScreen({.x = i, .y = 200, .width = 1, .height = 1}, blue);
    std::this_thread::sleep_for(std::chrono::milliseconds{5});
    own_.close(window);
  }
  ASSERT_TRUE(stream->comesToRest());
  EXPECT_GT(completeCount(stream->since(0)), 10U);
  expectNeverOwn(stream->since(0));
}

TEST_F(OwnWindows, whatTheyDrawIsNothingNew) {
  other_.open({.x = 20, .y = 20, .width = 100, .height = 100}, red);
  const auto window = own_.open({.x = 40, .y = 40, .width = 60, .height = 20}, magenta);
  const auto stream = watch();
  ASSERT_TRUE(stream->comesToRest());
  const auto mark = stream->mark();
  for (int i = 0; i < 20; ++i) {
    own_.draw(window, {.width = 60, .height = 20}, i % 2 == 0 ? blue : magenta);
    std::this_thread::sleep_for(std::chrono::milliseconds{5});
  }
  (void)stream->next(5);
  EXPECT_EQ(completeCount(stream->since(mark)), 0U);
}

TEST_F(OwnWindows, thatComeMoveAndGoAreNothingNew) {
  other_.open({.x = 20, .y = 20, .width = 100, .height = 100}, red);
  const auto stream = watch();
  ASSERT_TRUE(stream->comesToRest());
  const auto mark = stream->mark();
  const auto window = own_.open({.x = 40, .y = 40, .width = 120, .height = 60}, magenta);
  (void)stream->next(4);
  own_.place(window, {.x = 100, .y = 100, .width = 60, .height = 60});
  (void)stream->next(4);
  own_.close(window);
  (void)stream->next(4);
  EXPECT_EQ(completeCount(stream->since(mark)), 0U);
}

TEST_F(OwnWindows, whatIsDrawnBeneathThemIsNew) {
  const auto below = other_.open({.x = 20, .y = 20, .width = 100, .height = 100}, red);
  own_.open({.x = 0, .y = 0, .width = 200, .height = 200}, magenta);
  const auto stream = watch();
  ASSERT_TRUE(stream->comesToRest());
  for (const std::uint32_t colour : {green, blue, red, green}) {
    const auto mark = stream->mark();
    other_.draw(below, {.x = 10, .y = 10, .width = 5, .height = 5}, colour);
    ASSERT_TRUE(stream->shows(30, 30, colour, mark));
    EXPECT_EQ(stream->picture().at(35, 30), opaque | red);
    ASSERT_TRUE(stream->comesToRest());
  }
  expectNeverOwn(stream->since(0));
}

TEST_F(OwnWindows, whatIsDrawnBeneathButHiddenByAThirdIsNothingNew) {
  const auto below = other_.open({.x = 20, .y = 20, .width = 100, .height = 100}, red);
  other_.open({.x = 10, .y = 10, .width = 200, .height = 200}, green);
  own_.open({.x = 20, .y = 20, .width = 50, .height = 50}, magenta);
  const auto stream = watch();
  ASSERT_TRUE(stream->comesToRest());
  const auto mark = stream->mark();
  other_.draw(below, {.width = 100, .height = 100}, blue);
  (void)stream->next(5);
  EXPECT_EQ(completeCount(stream->since(mark)), 0U);
}

TEST_F(OwnWindows, otherWindowsThatMoveBeneathThemAreSeen) {
  const auto below = other_.open({.x = 20, .y = 20, .width = 40, .height = 40}, red);
  own_.open({.x = 0, .y = 0, .width = 200, .height = 200}, magenta);
  const auto stream = watch();
  ASSERT_TRUE(stream->comesToRest());
  auto mark = stream->mark();
  other_.place(below, {.x = 100, .y = 100, .width = 40, .height = 40});
  ASSERT_TRUE(stream->shows(100, 100, red, mark));
  EXPECT_EQ(stream->picture().at(20, 20), opaque | grey);
  mark = stream->mark();
  other_.close(below);
  ASSERT_TRUE(stream->shows(100, 100, grey, mark));
  mark = stream->mark();
  other_.open({.x = 5, .y = 5, .width = 9, .height = 9}, blue);
  own_.open({.x = 0, .y = 0, .width = 9, .height = 9}, magenta);
  ASSERT_TRUE(stream->shows(5, 5, blue, mark));
  expectNeverOwn(stream->since(0));
}

TEST_F(OwnWindows, theOrderOfTheWindowsBeneathIsThatOfTheScreen) {
  const auto lower = other_.open({.x = 20, .y = 20, .width = 40, .height = 40}, red);
  other_.open({.x = 20, .y = 20, .width = 40, .height = 40}, green);
  own_.open({.x = 0, .y = 0, .width = 100, .height = 100}, magenta);
  const auto stream = watch();
  ASSERT_TRUE(stream->shows(30, 30, green));
  const auto mark = stream->mark();
  other_.raise(lower);
  ASSERT_TRUE(stream->shows(30, 30, red, mark));
  expectNeverOwn(stream->since(mark));
}

TEST_F(OwnWindows, aTranslucentWindowBeneathIsLaidOverWhatIsBelowIt) {
  other_.open({.x = 20, .y = 20, .width = 40, .height = 40}, 0x0000FF);
  other_.openBlended({.x = 20, .y = 20, .width = 40, .height = 40}, 0x80800000);
  own_.open({.x = 0, .y = 0, .width = 100, .height = 100}, magenta);
  const auto stream = watch();
  EXPECT_EQ(stream->picture().at(30, 30), opaque | 0x80007F);
}

TEST_F(OwnWindows, aWindowBeneathIsNoLargerThanItsShape) {
  const auto below = other_.open({.x = 20, .y = 20, .width = 40, .height = 40}, red);
  other_.shape(below, {.x = 10, .y = 10, .width = 5, .height = 5});
  own_.open({.x = 0, .y = 0, .width = 100, .height = 100}, magenta);
  const auto stream = watch();
  const KeptFrame frame = stream->picture();
  EXPECT_EQ(frame.at(30, 30), opaque | red);
  EXPECT_EQ(frame.at(34, 34), opaque | red);
  EXPECT_EQ(frame.at(29, 30), opaque | grey);
  EXPECT_EQ(frame.at(35, 34), opaque | grey);
}

TEST_F(OwnWindows, aWindowBeneathHasItsBorder) {
  other_.open({.x = 20, .y = 20, .width = 40, .height = 40}, red, {.border = 3});
  const auto stream = watch();
  const KeptFrame before = stream->picture();
  own_.open({.x = 0, .y = 0, .width = 100, .height = 100}, magenta);
  other_.drawOnScreen({.x = 200, .y = 200, .width = 1, .height = 1}, blue);
  ASSERT_TRUE(stream->shows(200, 200, blue));
  const KeptFrame after = stream->picture();
  for (int y = 0; y < 100; ++y) {
    for (int x = 0; x < 100; ++x) ASSERT_EQ(after.at(x, y), before.at(x, y)) << x << ", " << y;
  }
}

TEST_F(OwnWindows, theWallpaperIsSeenBeneathThem) {
  own_.open({.x = 50, .y = 50, .width = 100, .height = 100}, magenta);
  const auto stream = watch();
  const auto mark = stream->mark();
  other_.setWallpaper(blue);
  ASSERT_TRUE(stream->shows(100, 100, blue, mark));
  EXPECT_EQ(stream->picture().at(0, 0), opaque | blue);
}

TEST_F(OwnWindows, aBackgroundThatWasCoveredAtFirstIsKnownOnceItWasSeen) {
  const auto cover = other_.open(whole, red);
  const auto stream = watch();
  auto mark = stream->mark();
  other_.close(cover);
  ASSERT_TRUE(stream->shows(100, 100, grey, mark));
  other_.drawOnScreen(whole, blue);
  ASSERT_TRUE(stream->shows(100, 100, blue, mark));
  mark = stream->mark();
  own_.open({.x = 50, .y = 50, .width = 100, .height = 100}, magenta);
  other_.drawOnScreen({.width = 1, .height = 1}, red);
  ASSERT_TRUE(stream->shows(0, 0, red, mark));
  EXPECT_EQ(stream->picture().at(100, 100), opaque | blue);
}

TEST_F(OwnWindows, thatReachOutOfTheAreaAreHiddenInside) {
  other_.open({.x = 90, .y = 90, .width = 40, .height = 40}, red);
  own_.open({.x = -20, .y = 80, .width = 600, .height = 100}, magenta);
  const auto stream = watch({.x = 101, .y = 71, .width = 60, .height = 44});
  const KeptFrame frame = stream->picture();
  expectNeverOwn({frame});
  EXPECT_EQ(frame.at(0, 43), opaque | red);
  EXPECT_EQ(frame.at(29, 43), opaque | grey);
}

TEST(ManagedOwnWindows, areHiddenWithTheirDecoration) {
  const TestDisplay display{{.width = 400, .height = 300, .hasWindowManager = true}};
  PaintingClient other{display.name(), Process::another};
  PaintingClient own{display.name(), Process::own};
  other.setBackground(grey);
  const auto source = X11ScreenSource::open(display.name());
  ASSERT_TRUE(source);
  const Watched stream{**source,
                       {.subject = ScreenRequest::Area{{.width = 400, .height = 300}},
                        .size = {.width = 400, .height = 300}}};
  ASSERT_TRUE(stream.comesToRest());
  const auto mark = stream.mark();
  own.open({.x = 50, .y = 60, .width = 100, .height = 80}, magenta, {.isManaged = true});
  (void)stream.next(30);
  for (const KeptFrame& frame : stream.since(mark)) {
    EXPECT_TRUE(std::ranges::all_of(frame.pixels,
                                    [](std::uint32_t pixel) { return pixel == (opaque | grey); }));
  }
}

}  // namespace
}  // namespace vesk::capture::x11::test
