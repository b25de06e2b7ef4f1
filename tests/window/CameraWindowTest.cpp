// The camera's window under the pointer.
#include "window/WindowStage.h"

namespace vesk::app::test {
namespace {

class CameraWindow : public WindowStage {
 protected:
  const package::PiPSettings& pip() { return session().look().pip; }
  /// Half of the round window, as shares of the stage.
  glm::vec2 half() {
    const QSizeF stage = item("previewStage").size();
    return {pip().size / 2 * stage.height() / stage.width(), pip().size / 2};
  }
  /// A point of the stage, given by its shares.
  QPointF onStage(double x, double y) {
    const QSizeF stage = item("previewStage").size();
    return place("previewStage", {x * stage.width(), y * stage.height()});
  }
  void makeRounded() {
    package::EditDocument document = session().snapshot();
    document.pip.shape = package::rawValue(package::PiPSettings::Shape::rounded);
    session().apply(document);
    ASSERT_EQ(pip().shape, package::PiPSettings::Shape::rounded);
  }
  /// Whether the window can be dragged by a point of the rectangle around it.
  bool isHeldAt(QPointF point) {
    const package::PiPSettings before = pip();
    const QPointF from = place("pipOverlay", point);
    hand().drag(from, from - QPointF(60, 40));
    const bool hasMoved = pip() != before;
    EXPECT_EQ(session().canUndo(), hasMoved);
    if (hasMoved) hand().type(Key::z, capture::controlModifier);
    EXPECT_EQ(pip(), before);
    return hasMoved;
  }
  void expectCenter(double x, double y) {
    constexpr double pixel = 0.002;
    EXPECT_NEAR(pip().center.x, x, pixel);
    EXPECT_NEAR(pip().center.y, y, pixel);
  }
};

TEST_F(CameraWindow, itIsDraggedAndTheGestureIsOneStep) {
  open(putTour());
  const package::PiPSettings before = pip();
  hand().drag(place("pipOverlay"), onStage(0.4, 0.5));
  expectCenter(0.4, 0.5);
  EXPECT_EQ(pip().size, before.size);
  hand().type(Key::z, capture::controlModifier);
  EXPECT_EQ(pip(), before);
  EXPECT_FALSE(session().canUndo());
  hand().drag(place("pipOverlay"), onStage(0.6, 0.4));
  expectCenter(0.6, 0.4);
}

TEST_F(CameraWindow, draggedIntoACornerItStopsAtTheEdges) {
  open(putTour());
  hand().drag(place("pipOverlay"), onStage(1.05, 1.04));
  EXPECT_NEAR(pip().center.x, 1 - half().x, 1e-6);
  EXPECT_NEAR(pip().center.y, 1 - half().y, 1e-6);
  hand().drag(place("pipOverlay"), onStage(-0.02, -0.03));
  EXPECT_NEAR(pip().center.x, half().x, 1e-6);
  EXPECT_NEAR(pip().center.y, half().y, 1e-6);
}

TEST_F(CameraWindow, itsHandleResizesItWithinTheLimits) {
  open(putTour());
  const package::PiPSettings before = pip();
  hand().drag(place("pipOverlay"), onStage(0.5, 0.5));
  hand().drag(place("pipResizeHandle"), onStage(0.95, 0.95));
  EXPECT_EQ(pip().size, editor::PipGesture::largest);
  hand().drag(place("pipResizeHandle"), onStage(0.505, 0.505));
  EXPECT_EQ(pip().size, editor::PipGesture::smallest);
  expectCenter(0.5, 0.5);
  while (session().canUndo()) hand().type(Key::z, capture::controlModifier);
  EXPECT_EQ(pip(), before);
}

TEST_F(CameraWindow, aSmallDragOfTheHandleIsAStepOfItsOwn) {
  open(putTour());
  const package::PiPSettings before = pip();
  const QPointF handle = place("pipResizeHandle");
  hand().drag(handle, handle - QPointF(15, 15));
  EXPECT_LT(pip().size, before.size);
  EXPECT_GT(pip().size, editor::PipGesture::smallest);
  hand().type(Key::z, capture::controlModifier);
  EXPECT_EQ(pip(), before);
  EXPECT_FALSE(session().canUndo());
}

TEST_F(CameraWindow, roundItIsNotHeldAtTheCornersOfItsBounds) {
  open(putTour());
  const QSizeF size = item("pipOverlay").size();
  // At the bottom right there is the handle.
  EXPECT_FALSE(isHeldAt({8, 8}));
  EXPECT_FALSE(isHeldAt({size.width() - 8, 8}));
  EXPECT_FALSE(isHeldAt({8, size.height() - 8}));
  EXPECT_TRUE(isHeldAt({size.width() / 2, 3}));
  EXPECT_TRUE(isHeldAt({3, size.height() / 2}));
}

TEST_F(CameraWindow, roundedItIsHeldAllOverButForTheRoundingOfItsCorners) {
  open(putTour());
  makeRounded();
  const QSizeF size = item("pipOverlay").size();
  EXPECT_NEAR(size.width() / size.height(), 16.0 / 9, 1e-3);
  EXPECT_FALSE(isHeldAt({1, 1}));
  EXPECT_FALSE(isHeldAt({size.width() - 1, 1}));
  EXPECT_FALSE(isHeldAt({1, size.height() - 1}));
  EXPECT_TRUE(isHeldAt({4, 4}));
  EXPECT_TRUE(isHeldAt({size.width() - 4, 4}));
  EXPECT_TRUE(isHeldAt({1, 12}));
  EXPECT_TRUE(isHeldAt({12, 1}));
}

TEST_F(CameraWindow, itFollowsOnlyOnceThePointerHasGoneTwoPoints) {
  open(putTour());
  const package::PiPSettings before = pip();
  const QPointF from = place("pipOverlay");
  hand().drag(from, from + QPointF(1, 0));
  hand().drag(from, from - QPointF(0, 1));
  EXPECT_EQ(pip(), before);
  EXPECT_FALSE(session().canUndo());
  hand().drag(from, from - QPointF(2, 0));
  EXPECT_NE(pip(), before);
}

TEST_F(CameraWindow, aRecordingWithoutACameraHasNothingToTakeHoldOf) {
  open(putMarks());
  EXPECT_FALSE(isShown("pipOverlay"));
  EXPECT_FALSE(isShown("pipResizeHandle"));
}

}  // namespace
}  // namespace vesk::app::test
