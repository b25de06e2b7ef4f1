#include "capture/x11/InputListening.h"

#include <xcb/xcb.h>

#include <utility>

#include "capture/Clock.h"
#include "capture/x11/DesktopSettings.h"
#include "capture/x11/EventStamps.h"
#include "capture/x11/PointerPosition.h"

namespace vesk::capture::x11 {
namespace {

using Button = package::RecordedEvent::Button;

double now() {
  return MonotonicClock{}.now();
}

Button buttonOf(std::uint32_t number) {
  if (number == XCB_BUTTON_INDEX_1) return Button::left;
  if (number == XCB_BUTTON_INDEX_3) return Button::right;
  return Button::other;
}

bool isButtonMapping(const Event& event) {
  return event.type() == XCB_MAPPING_NOTIFY &&
         event.as<xcb_mapping_notify_event_t>().request == XCB_MAPPING_POINTER;
}

}  // namespace

std::expected<std::unique_ptr<Listening>, BackendError> InputListening::begin(
    const std::string& display, bool includesKeys, InputSource::Callback callback) {
  auto opened = Connection::open(display);
  if (!opened) return std::unexpected(opened.error());
  auto connection = std::make_unique<const Connection>(*std::move(opened));
  const auto inputs = RawInputs::open(*connection);
  if (!inputs) return std::unexpected(BackendError{"X 显示服务器没有 XInput 2 扩展"});
  std::optional<Keyboard> keyboard;
  if (includesKeys) {
    auto openedKeyboard = Keyboard::open(*connection);
    if (!openedKeyboard) return std::unexpected(openedKeyboard.error());
    keyboard = *std::move(openedKeyboard);
  }
  return std::unique_ptr<Listening>{
      new InputListening{std::move(connection), *inputs, std::move(keyboard), std::move(callback)}};
}

InputListening::InputListening(std::unique_ptr<const Connection> connection,
                               const RawInputs& inputs, std::optional<Keyboard> keyboard,
                               InputSource::Callback callback)
    : connection_{std::move(connection)},
      inputs_{inputs},
      keyboard_{std::move(keyboard)},
      callback_{std::move(callback)},
      clicks_{readDoubleClick(*connection_)} {
  readDevices();
  readButtonMapping();  // whose answer also says that the server has heard what is wanted
  thread_.emplace(
      *connection_, "vesk.input", [this](const Event& event) { receive(event); },
      [this] { return tellRepeats(); });
}

void InputListening::receive(const Event& event) {
  if (keyboard_) keyboard_->follow(event);
  if (isButtonMapping(event)) readButtonMapping();
  if (const auto input = inputs_.read(event)) receive(*input);
}

void InputListening::receive(const RawInput& input) {
  const double time = secondsOfStamp(input.stamp, now());
  switch (input.kind) {
    case RawInput::Kind::keyPress:
      return pressKey(time, input.detail);
    case RawInput::Kind::keyRelease:
      return releaseKey(input.detail);
    case RawInput::Kind::buttonPress:
    case RawInput::Kind::buttonRelease:
      return changeButton(time, input);
    case RawInput::Kind::motion: {
      const auto axes = scrollAxes_.find(input.device);
      if (axes == scrollAxes_.end()) return;
      if (const auto steps = axes->second.steps(input.values)) scroll(time, *steps);
      return;
    }
    case RawInput::Kind::devicesChanged:
      repeat_.releaseAll();
      return readDevices();
  }
}

void InputListening::pressKey(double time, std::uint32_t detail) {
  const auto key = static_cast<XKeyCode>(detail);
  repeat_.press(key, time, keyboard_->repeatRate(key));
  tellKey(time, key);
}

void InputListening::releaseKey(std::uint32_t detail) {
  repeat_.release(static_cast<XKeyCode>(detail));
}

void InputListening::changeButton(double time, const RawInput& input) {
  const auto button = mapped(input.detail);
  if (button == 0) return;  // the user has switched it off
  const bool isPressed = input.kind == RawInput::Kind::buttonPress;
  if (const auto steps = stepsOfButton(button)) {
    // A device with axes tells the same by them, more finely.
    if (isPressed && !scrollAxes_.contains(input.device)) scroll(time, *steps);
    return;
  }
  ButtonChange change{.time = time, .button = buttonOf(button), .isPressed = isPressed};
  if (isPressed) {
    const auto at = pointerPosition(*connection_);
    change.clickCount = clicks_.press(change.button, time, at.value_or(ScreenPoint{}));
  }
  callback_(change);
}

void InputListening::scroll(double time, const ScrollSteps& steps) {
  callback_(ScrollStep{.time = time, .dx = -steps.right, .dy = -steps.down});
}

void InputListening::tellKey(double time, XKeyCode key) {
  const auto keyCode = keyCodeOf(key);
  if (!keyCode || isModifierKey(*keyCode)) return;
  callback_(KeyPress{.time = time,
                     .keyCode = *keyCode,
                     .modifierFlags = keyboard_->modifierFlags(),
                     .characters = keyboard_->typed(*keyCode)});
}

std::optional<double> InputListening::tellRepeats() {
  while (const auto repeat = repeat_.next(now())) tellKey(repeat->time, repeat->key);
  return repeat_.due().transform([](double due) { return due - now(); });
}

void InputListening::readDevices() {
  scrollAxes_ = inputs_.scrollAxes();
  // Movements come in great numbers, so they are asked for only where one can be a scroll.
  inputs_.select(keyboard_.has_value(), !scrollAxes_.empty());
}

void InputListening::readButtonMapping() {
  const auto mapping = owned(xcb_get_pointer_mapping_reply(
      connection_->get(), xcb_get_pointer_mapping(connection_->get()), nullptr));
  if (!mapping) return;
  const auto* const first = xcb_get_pointer_mapping_map(mapping.get());
  buttonMapping_.assign(first, first + xcb_get_pointer_mapping_map_length(mapping.get()));
}

std::uint32_t InputListening::mapped(std::uint32_t button) const {
  if (button == 0 || button > buttonMapping_.size()) return button;
  return buttonMapping_[button - 1];
}

}  // namespace vesk::capture::x11
