#pragma once

#include <QObject>
#include <QPointF>
#include <QQuickWindow>
#include <cstdint>

#include "capture/ModifierFlags.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/TestUser.h"

namespace vesk::app::test {

/// The keys that the tests press, by their place on the keyboard.
enum class Key : capture::KeyCode {
  z = 6,
  m = 46,
  tab = 48,
  space = 49,
  backspace = 51,
  escape = 53,
  keypadEnter = 76,
  enter = 36,
  forwardDelete = 117,
  f4 = 118,
  left = 123,
  right = 124,
};

/// Somebody who works at a window with the pointer and the keyboard of the display server. Points
/// are those of the window's scene. What a call does has come to the window when it returns.
class Hand : public QObject {
 public:
  using Modifiers = capture::ModifierFlags;

  /// Both outlive the hand.
  Hand(const capture::x11::test::TestDisplay& display, QQuickWindow& window);
  /// Lets go of everything.
  ~Hand() override;

  void moveTo(QPointF point);
  void press(QPointF point);
  void release();
  void click(QPointF point);
  void rightClick(QPointF point);
  void doubleClick(QPointF point);

  /// With the button held: goes there in a few steps, as a pointer does.
  void dragTo(QPointF point);
  /// Press, drag and release.
  void drag(QPointF from, QPointF to);

  void type(Key key, Modifiers modifiers = 0);
  /// Types what the desktop takes, and the window is not told of.
  void typeToDesktop(Key key, Modifiers modifiers);
  /// Presses Alt, and lets it go.
  void holdAlt();
  void releaseAlt();

  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  enum class Button : std::uint8_t { left = 1, right = 3 };

  void send(QPointF point);
  void waitForPointer();
  void pressButton(Button button);
  void releaseButton(Button button);

  const capture::x11::test::TestDisplay& display_;
  QQuickWindow& window_;
  capture::x11::test::TestUser user_;
  QPoint sent_;  ///< where the pointer was moved to last
  QPoint seen_;  ///< where the window was told of it last
  int presses_ = 0;
  int doubleClicks_ = 0;
  int releases_ = 0;
  int keyReleases_ = 0;
  bool isHolding_ = false;
  bool isHoldingAlt_ = false;
};

}  // namespace vesk::app::test
