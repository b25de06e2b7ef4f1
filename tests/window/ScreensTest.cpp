// What the window looks like, one picture a state. See Screens.h.
#include "window/Screens.h"
#include "window/WindowStage.h"

namespace vesk::app::test {
namespace {

class ScreensWindow : public WindowStage {
 protected:
  /// Waits for what fades in or out, and for what is decoded.
  void expectScreen(const std::string& name) {
    testing::AssertionResult result = testing::AssertionFailure();
    for (int attempt = 0; attempt < 3 && !result; ++attempt) {
      ASSERT_TRUE(comesToRest());
      result = matchesScreen(window().grabWindow(), name);
    }
    EXPECT_TRUE(result);
  }
  void pointNowhere() { hand().moveTo({2, window().height() - 2.0}); }
  QString named(const char* prefix, std::size_t number) {
    return QString::fromStdString(prefix + segment(number).id);
  }
  void resizeTo(QSize size) {
    window().resize(size);
    ASSERT_TRUE(until([&] { return window().size() == size; }));
  }
};

TEST_F(ScreensWindow, theEmptyPage) {
  start({.mode = RootMode::edit});
  expectScreen("empty");
}

TEST_F(ScreensWindow, aRecordingThatWasJustOpened) {
  open(putMarks());
  expectScreen("opened");
}

TEST_F(ScreensWindow, aSegmentIsSelected) {
  open(putTour());
  hand().click(place(named("segment_", 0)));
  pointNowhere();
  expectScreen("selected");
}

TEST_F(ScreensWindow, anEndIsTrimmed) {
  open(putTour());
  const QPointF from = place(named("trimEnd_", 0));
  hand().press(from);
  hand().dragTo(from - QPointF(30, 0));
  expectScreen("trim");
  hand().release();
}

TEST_F(ScreensWindow, theMenuOfASegmentIsOpen) {
  open(putTour());
  hand().rightClick(place(named("segment_", 0)));
  ASSERT_TRUE(until([&] { return isShown("deleteSegmentItem"); }));
  pointNowhere();
  expectScreen("menu");
  hand().type(Key::escape);
  EXPECT_TRUE(until([&] { return !isShown("deleteSegmentItem"); }));
}

TEST_F(ScreensWindow, pausedAfterThreeSeconds) {
  open(putTour());
  hand().click(place("timelineRuler", {72, 10}));
  pointNowhere();
  expectScreen("paused");
}

TEST_F(ScreensWindow, thePointerIsOnTheCamerasWindow) {
  open(putTour());
  hand().moveTo(place("pipOverlay"));
  expectScreen("camera");
}

TEST_F(ScreensWindow, aLargeWindow) {
  open(putTour());
  resizeTo({1920, 1080});
  hand().click(place("fitButton"));
  hand().click(place("timelineRuler", {250, 10}));
  pointNowhere();
  expectScreen("large");
}

TEST_F(ScreensWindow, theSmallestWindow) {
  open(putTour());
  resizeTo(window().minimumSize());
  hand().click(place(named("segment_", 1)));
  hand().click(place("toggleSelectedButton"));
  pointNowhere();
  expectScreen("small");
}

TEST_F(ScreensWindow, inTheSmallestWindowTheHeaderOfTheTimelineDoesNotOverlap) {
  open(putTour());
  resizeTo(window().minimumSize());
  hand().click(place(named("segment_", 1)));
  hand().click(place("toggleSelectedButton"));
  const QPointF selection = place("selectionText", {0, 0});
  const QPointF edited = place("manualEditsText", {item("manualEditsText").width(), 0});
  EXPECT_LT(edited.x() + 8, selection.x());
}

TEST(Screens, aDifferenceIsMeasured) {
  QImage reference(100, 100, QImage::Format_RGB888);
  reference.fill(Qt::black);
  QImage picture = reference;
  EXPECT_EQ(difference(picture, reference).mean, 0);
  for (int x = 0; x < 100; ++x) picture.setPixelColor(x, 7, QColor(90, 0, 0));
  const ScreenDifference off = difference(picture, reference);
  EXPECT_NEAR(off.mean, 0.3, 1e-9);
  EXPECT_NEAR(off.far, 0.01, 1e-9);
}

}  // namespace
}  // namespace vesk::app::test
