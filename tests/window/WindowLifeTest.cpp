// The window as the desktop has it: closed, brought back, out of sight, at rest.
#include <sys/resource.h>

#include "window/Desktop.h"
#include "window/WindowRequests.h"
#include "window/WindowStage.h"

namespace vesk::app::test {
namespace {

using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

class WindowLife : public WindowStage {
 protected:
  /// Time on the processor that this process has had so far, on all its threads.
  static std::chrono::microseconds processorTime() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto sum = [](const timeval& time) {
      return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
    };
    return sum(usage.ru_utime) + sum(usage.ru_stime);
  }
};

TEST_F(WindowLife, itHasItsTitleItsSizeAndItsLeastSize) {
  open(putTour());
  EXPECT_EQ(window().title(), QString("Vesk"));
  EXPECT_EQ(window().size(), QSize(1060, 720));
  EXPECT_EQ(window().minimumSize(), QSize(860, 640));
}

TEST_F(WindowLife, closedItLeavesTheSessionAndAnActivationBringsItBack) {
  open(putTour());
  hand().click(place("timelineRuler", {48, 10}));
  hand().type(Key::space);
  hand().typeToDesktop(Key::f4, capture::optionModifier);
  ASSERT_TRUE(until([&] { return !window().isVisible(); }));
  EXPECT_FALSE(session().isPlaying());
  EXPECT_TRUE(session().hasProject());
  EXPECT_GE(session().currentTime(), 2);

  mainWindow().bringToFront({});
  EXPECT_TRUE(until([&] { return window().isExposed() && window().isActive(); }));
  ASSERT_TRUE(comesToRest());
  hand().type(Key::right);
  hand().type(Key::m);
  EXPECT_TRUE(session().hasProject());
  hand().type(Key::space);
  EXPECT_TRUE(session().isPlaying());
}

TEST_F(WindowLife, theSeekThatWasAskedForComesWithEachActivation) {
  start({.mode = RootMode::edit, .seek = 4, .package = putTour()});
  ASSERT_TRUE(until([&] { return session().currentTime() == 4; }));
  session().seek(1);
  hand().typeToDesktop(Key::f4, capture::optionModifier);
  ASSERT_TRUE(until([&] { return !window().isVisible(); }));
  mainWindow().bringToFront({});
  EXPECT_TRUE(until([&] { return session().currentTime() == 4; }));
}

TEST_F(WindowLife, closedByItsUserItStillSaves) {
  const auto package = putTour();
  open(package);
  hand().click(place(QString::fromStdString("segment_" + segment(0).id)));
  hand().type(Key::forwardDelete);
  hand().typeToDesktop(Key::f4, capture::optionModifier);
  ASSERT_TRUE(until([&] { return !window().isVisible(); }));
  EXPECT_TRUE(until([&] { return std::filesystem::exists(package / "edit.json"); }));
  EXPECT_EQ(saved(package), session().snapshot());
  mainWindow().bringToFront({});
  EXPECT_TRUE(until([&] { return window().isExposed() && window().isActive(); }));
}

TEST_F(WindowLife, pausedAndUntouchedItDrawsNothingAndTakesNoTime) {
  open(putTour());
  hand().click(place("timelineRuler", {72, 10}));
  hand().moveTo({2, window().height() - 2.0});
  ASSERT_TRUE(comesToRest());
  const auto before = processorTime();
  constexpr auto span = 5s;
  EXPECT_EQ(framesIn(span), 0);
  const auto taken = processorTime() - before;
  EXPECT_LT(taken, span * 0.01) << "microseconds in five seconds: " << taken.count();
}

TEST_F(WindowLife, whilePlayingItDraws) {
  open(putTour());
  hand().type(Key::space);
  EXPECT_GT(framesIn(1s), 3);
}

TEST_F(WindowLife, minimisedItGoesOnPlayingAndDrawsNothing) {
  open(putTour());
  hand().type(Key::space);
  ASSERT_TRUE(until([&] { return session().currentTime() > 0.1; }));
  window().showMinimized();
  ASSERT_TRUE(until([&] { return !window().isExposed(); }));
  EXPECT_EQ(framesIn(1500ms), 0);
  EXPECT_TRUE(session().isPlaying());
  mainWindow().bringToFront({});
  ASSERT_TRUE(until([&] { return window().isExposed(); }));
  EXPECT_TRUE(until([&] { return session().currentTime() > 1.5; }));
}

TEST_F(WindowLife, maximisedItComesBackMaximised) {
  open(putTour());
  window().showMaximized();
  const auto isMaximised = [&] {
    return window().isExposed() && window().visibility() == QWindow::Maximized;
  };
  ASSERT_TRUE(until([&] { return isMaximised() && window().width() > 1060; }));
  const QSize size = window().size();
  const auto comesBack = [&] {
    mainWindow().bringToFront({});
    return until([&] { return isMaximised() && window().isActive(); }) && comesToRest();
  };

  minimise(Desktop::current().display().connection(), static_cast<std::uint32_t>(window().winId()));
  ASSERT_TRUE(until([&] { return !window().isExposed(); }));
  ASSERT_TRUE(comesBack());
  EXPECT_EQ(window().size(), size);

  hand().typeToDesktop(Key::f4, capture::optionModifier);
  ASSERT_TRUE(until([&] { return !window().isVisible(); }));
  ASSERT_TRUE(comesBack());
  EXPECT_EQ(window().size(), size);

  ASSERT_TRUE(comesBack()) << "where it was in front already";
  EXPECT_EQ(window().size(), size);
}

TEST_F(WindowLife, hiddenItDrawsNothing) {
  open(putTour());
  hand().type(Key::space);
  window().hide();
  ASSERT_TRUE(until([&] { return !window().isExposed(); }));
  EXPECT_EQ(framesIn(1s), 0);
  EXPECT_FALSE(session().isPlaying());
}

TEST_F(WindowLife, theTabsChangeThePage) {
  open(putTour());
  hand().click(place("tab_library"));
  EXPECT_TRUE(isShown("libraryPage"));
  EXPECT_FALSE(isShown("editorPage"));
  hand().type(Key::space);
  EXPECT_FALSE(session().isPlaying()) << "the keys belong to the editor's page";
  hand().click(place("tab_record"));
  EXPECT_TRUE(isShown("recordPage"));
  hand().click(place("tab_edit"));
  EXPECT_TRUE(isShown("editorPage"));
}

}  // namespace
}  // namespace vesk::app::test
