// The playhead under the pointer and the keys.
#include <QElapsedTimer>
#include <QQuickWindow>
#include <algorithm>
#include <vector>

#include "editor/quick/PreviewView.h"
#include "media/PictureFeed.h"
#include "window/WindowStage.h"

namespace vesk::app::test {
namespace {

using std::chrono_literals::operator""ms;

class PlaybackWindow : public WindowStage {
 protected:
  /// The time stamp of the picture that the recording shows at a time.
  static double stampAt(const std::filesystem::path& package, double time) {
    const auto feed = media::PictureFeed::open(package / "screen.mov");
    return feed.value()->waitForPictureAt(time).value().pts;
  }
  double shownStamp() {
    const auto picture = session().screenPicture();
    return picture ? picture->pts : -1;
  }
};

TEST_F(PlaybackWindow, aDragAlongTheRulerScrubsAndEndsOnTheExactPicture) {
  const auto package = putTour();
  open(package);
  const QImage before = window().grabWindow();
  hand().press(place("timelineRuler", {48, 10}));
  EXPECT_NEAR(session().currentTime(), 2, exact);
  hand().dragTo(place("timelineRuler", {120, 10}));
  EXPECT_NEAR(session().currentTime(), 5, exact);
  hand().release();
  const double stamp = stampAt(package, 5);
  EXPECT_TRUE(until([&] { return shownStamp() == stamp; })) << shownStamp() << ", not " << stamp;
  ASSERT_TRUE(comesToRest());
  EXPECT_EQ(shownStamp(), stamp);
  EXPECT_NE(window().grabWindow(), before);
}

TEST_F(PlaybackWindow, aDragBeyondTheEndsOfTheRulerStopsAtTheRecordings) {
  open(putTour());
  hand().press(place("timelineRuler", {48, 10}));
  hand().dragTo(place("timelineRuler", {600, 10}));
  EXPECT_EQ(session().currentTime(), session().duration());
  hand().dragTo(place("timelineRuler", {-40, 10}));
  EXPECT_EQ(session().currentTime(), 0);
  hand().release();
}

TEST_F(PlaybackWindow, theSpaceBarPlaysAndPauses) {
  open(putTour());
  hand().type(Key::space);
  EXPECT_TRUE(session().isPlaying());
  EXPECT_TRUE(until([&] { return session().currentTime() > 0.3; }));
  hand().type(Key::space);
  EXPECT_FALSE(session().isPlaying());
  const double stopped = session().currentTime();
  ASSERT_TRUE(comesToRest());
  EXPECT_EQ(session().currentTime(), stopped);
}

/// What changes between two frames must not cost the one after them. Alone in a window, nothing
/// else asks for frames.
TEST_F(PlaybackWindow, framesFollowEachOtherWhilePlaying) {
  open(putTour());
  QQuickWindow bare;
  bare.resize(320, 200);
  editor::PreviewView view(bare.contentItem());
  view.setSize(bare.size());
  view.setController(&session());
  bare.show();
  int frames = 0;
  QObject::connect(&bare, &QQuickWindow::afterAnimating, &session(), [&] { ++frames; });
  ASSERT_TRUE(until([&] { return frames > 0; }));
  window().hide();
  session().play();
  ASSERT_TRUE(until([&] { return frames > 10; }));
  std::vector<qint64> waits;
  for (int change = 0; change < 11; ++change) {
    session().tick();
    const int wanted = frames + 3;
    QElapsedTimer since;
    since.start();
    ASSERT_TRUE(until([&] { return frames >= wanted; }));
    waits.push_back(since.elapsed());
  }
  EXPECT_TRUE(session().isPlaying());
  session().pause();
  bare.hide();
  window().show();
  // A window that is hidden before the window manager had made it the active one never ceases to
  // be.
  EXPECT_TRUE(until([&] { return window().isActive() && window().isExposed(); }));
  std::ranges::sort(waits);
  // Where a frame fails to come, the session looks at the clock 250 ms after the one before.
  EXPECT_LT(waits[waits.size() / 2], 180) << "ms at the median";
}

/// Can be told what its window would tell it, and counts how often it is asked for its picture.
class ToldView : public editor::PreviewView {
 public:
  using PreviewView::itemChange;
  using PreviewView::PreviewView;
  int drawings = 0;

 protected:
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override {
    ++drawings;
    return PreviewView::updatePaintNode(node, data);
  }
};

TEST_F(PlaybackWindow, onAScreenOfAnotherScaleAPausedPictureIsDrawnAnew) {
  open(putTour());
  ToldView view(window().contentItem());
  view.setSize({64, 36});
  view.setController(&session());
  ASSERT_TRUE(until([&] { return view.drawings > 0; }));
  ASSERT_TRUE(comesToRest());
  const int before = view.drawings;
  view.itemChange(QQuickItem::ItemDevicePixelRatioHasChanged, qreal{2});
  EXPECT_TRUE(until([&] { return view.drawings > before; }));
}

TEST_F(PlaybackWindow, theButtonPlaysAndTheEndStops) {
  open(putTour());
  hand().click(place("timelineRuler", {230, 10}));
  hand().click(place("playButton"));
  EXPECT_TRUE(session().isPlaying());
  EXPECT_TRUE(until([&] { return !session().isPlaying(); }));
  EXPECT_EQ(session().currentTime(), session().duration());
}

TEST_F(PlaybackWindow, theArrowsStepByAPictureAndWithShiftByASecond) {
  open(putTour());
  hand().click(place("timelineRuler", {96, 10}));
  ASSERT_NEAR(session().currentTime(), 4, exact);
  hand().type(Key::right);
  EXPECT_NEAR(session().currentTime(), 4 + 1.0 / 60, exact);
  hand().type(Key::left);
  hand().type(Key::left);
  EXPECT_NEAR(session().currentTime(), 4 - 1.0 / 60, exact);
  hand().type(Key::right, capture::shiftModifier);
  EXPECT_NEAR(session().currentTime(), 5 - 1.0 / 60, exact);
  hand().type(Key::left, capture::shiftModifier);
  EXPECT_NEAR(session().currentTime(), 4 - 1.0 / 60, exact);
}

TEST_F(PlaybackWindow, theStepButtonsDoAsTheArrows) {
  open(putTour());
  hand().click(place("nextFrameButton"));
  EXPECT_NEAR(session().currentTime(), 1.0 / 60, exact);
  hand().click(place("previousFrameButton"));
  EXPECT_EQ(session().currentTime(), 0);
}

TEST_F(PlaybackWindow, seekIsMetAtEachActivation) {
  const auto package = putTour();
  start({.mode = RootMode::edit, .seek = 3.5, .package = package});
  EXPECT_TRUE(until([&] { return session().currentTime() == 3.5; }));
  hand().click(place("timelineRuler", {24, 10}));
  ASSERT_NEAR(session().currentTime(), 1, exact);
  window().showMinimized();
  ASSERT_TRUE(until([] { return qGuiApp->applicationState() != Qt::ApplicationActive; }));
  mainWindow().bringToFront({});
  EXPECT_TRUE(until([&] { return session().currentTime() == 3.5; }));
}

TEST_F(PlaybackWindow, theScriptedEditIsSeenInTheWindow) {
  start({.mode = RootMode::edit, .editPoke = true, .package = putTour()});
  EXPECT_TRUE(until([&] { return session().look().pip.size == 0.37; }));
  EXPECT_EQ(session().look().pip.center, glm::vec2(0.31F, 0.42F));
  const QSizeF stage = item("previewStage").size();
  const QPointF middle =
      item("pipOverlay")
          .mapToItem(&item("previewStage"), item("pipOverlay").boundingRect().center());
  EXPECT_NEAR(middle.x(), 0.31 * stage.width(), 0.01);
  EXPECT_NEAR(middle.y(), 0.42 * stage.height(), 0.01);
}

}  // namespace
}  // namespace vesk::app::test
