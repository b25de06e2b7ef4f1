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

TEST_F(CameraWindow, aRecordingWithoutACameraHasNothingToTakeHoldOf) {
  open(putMarks());
  EXPECT_FALSE(isShown("pipOverlay"));
  EXPECT_FALSE(isShown("pipResizeHandle"));
}

}  // namespace
}  // namespace vesk::app::test
