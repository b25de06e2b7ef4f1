#include "window/Hand.h"

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QCoreApplication>
#include <QHoverEvent>
#include <QMouseEvent>
#include <bit>
#include <utility>

#include "window/Until.h"

namespace vesk::app::test {
namespace {

constexpr capture::x11::XKeyCode altKey = 64;
constexpr int dragSteps = 6;

}  // namespace

Hand::Hand(const capture::x11::test::TestDisplay& display, QQuickWindow& window)
    : display_(display), window_(window), user_(display.connection()), seen_(-1, -1) {
  window_.installEventFilter(this);
}

Hand::~Hand() {
  if (isHolding_) user_.releaseButton(static_cast<std::uint8_t>(Button::left));
  if (isHoldingAlt_) user_.releaseKey(altKey);
}

bool Hand::eventFilter(QObject* /*object*/, QEvent* event) {
  switch (event->type()) {
    case QEvent::Enter:
      seen_ = static_cast<QEnterEvent*>(event)->position().toPoint();
      break;
    case QEvent::MouseMove:
      seen_ = static_cast<QMouseEvent*>(event)->position().toPoint();
      break;
    case QEvent::MouseButtonPress:
      ++presses_;
      break;
    case QEvent::MouseButtonDblClick:
      ++doubleClicks_;
      break;
    case QEvent::MouseButtonRelease:
      ++releases_;
      break;
    case QEvent::KeyRelease:
      ++keyReleases_;
      break;
    default:
      break;
  }
  return false;
}

void Hand::send(QPointF point) {
  const auto& connection = display_.connection();
  const auto origin = capture::x11::owned(xcb_translate_coordinates_reply(
      connection.get(),
      xcb_translate_coordinates(connection.get(), static_cast<xcb_window_t>(window_.winId()),
                                connection.root(), 0, 0),
      nullptr));
  sent_ = point.toPoint();
  user_.movePointer({static_cast<double>(origin->dst_x + sent_.x()),
                     static_cast<double>(origin->dst_y + sent_.y())});
}

void Hand::waitForPointer() {
  ASSERT_TRUE(until([this] { return seen_ == sent_; })) << "the pointer does not arrive";
}

void Hand::moveTo(QPointF point) {
  if (seen_ == point.toPoint()) return;
  send(point);
  waitForPointer();
}

void Hand::pressButton(Button button) {
  const int before = presses_;
  user_.pressButton(static_cast<std::uint8_t>(button));
  isHolding_ = button == Button::left;
  ASSERT_TRUE(until([&] { return presses_ > before; })) << "the button's press does not arrive";
}

void Hand::releaseButton(Button button) {
  const int before = releases_;
  user_.releaseButton(static_cast<std::uint8_t>(button));
  isHolding_ = false;
  ASSERT_TRUE(until([&] { return releases_ > before; })) << "the button's release does not arrive";
}

void Hand::press(QPointF point) {
  moveTo(point);
  pressButton(Button::left);
}

void Hand::release() {
  releaseButton(Button::left);
}

void Hand::click(QPointF point) {
  press(point);
  release();
}

void Hand::rightClick(QPointF point) {
  moveTo(point);
  pressButton(Button::right);
  releaseButton(Button::right);
}

void Hand::doubleClick(QPointF point) {
  moveTo(point);
  const int before = doubleClicks_;
  const auto isDone = [&] { return doubleClicks_ > before && releases_ >= presses_; };
  for (int attempt = 0; attempt < 5 && doubleClicks_ == before; ++attempt) {
    // At once, so that they are one however slow the window is; on a busy display the window
    // manager may still keep one of them for itself.
    user_.clickButton(static_cast<std::uint8_t>(Button::left));
    user_.clickButton(static_cast<std::uint8_t>(Button::left));
    static_cast<void>(until(isDone, std::chrono::seconds{3}));
  }
  ASSERT_TRUE(doubleClicks_ > before) << "the clicks do not arrive as one";
}

void Hand::dragTo(QPointF point) {
  const QPointF from = sent_;
  // Without a wait, so that a gesture is never so slow that it counts as two.
  for (int step = 1; step <= dragSteps; ++step) {
    send(from + (point - from) * step / dragSteps);
    QCoreApplication::processEvents();
  }
  waitForPointer();
}

void Hand::drag(QPointF from, QPointF to) {
  press(from);
  dragTo(to);
  release();
}

void Hand::type(Key key, Modifiers modifiers) {
  const int expected = keyReleases_ + 1 + std::popcount(modifiers);
  user_.type(static_cast<capture::KeyCode>(key), modifiers);
  ASSERT_TRUE(until([&] { return keyReleases_ >= expected; })) << "the key does not arrive";
}

void Hand::typeToDesktop(Key key, Modifiers modifiers) {
  user_.type(static_cast<capture::KeyCode>(key), modifiers);
}

void Hand::holdAlt() {
  user_.pressKey(altKey);
  isHoldingAlt_ = true;
}

void Hand::releaseAlt() {
  const int before = keyReleases_;
  user_.releaseKey(altKey);
  isHoldingAlt_ = false;
  ASSERT_TRUE(until([&] { return keyReleases_ > before; })) << "the key does not arrive";
}

}  // namespace vesk::app::test
