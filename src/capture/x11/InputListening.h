#pragma once

#include <cstdint>
#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "capture/BackendError.h"
#include "capture/InputSource.h"
#include "capture/Listening.h"
#include "capture/x11/ClickCounter.h"
#include "capture/x11/Connection.h"
#include "capture/x11/Event.h"
#include "capture/x11/EventThread.h"
#include "capture/x11/KeyRepeat.h"
#include "capture/x11/Keyboard.h"
#include "capture/x11/RawInput.h"
#include "capture/x11/ScrollAxes.h"

namespace vesk::capture::x11 {

/// One who listens to mouse and keyboard, with a connection and a thread of its own.
class InputListening final : public Listening {
 public:
  /// @param display as for `Connection::open`.
  static std::expected<std::unique_ptr<Listening>, BackendError> begin(
      const std::string& display, bool includesKeys, InputSource::Callback callback);

 private:
  InputListening(std::unique_ptr<const Connection> connection, const RawInputs& inputs,
                 std::optional<Keyboard> keyboard, InputSource::Callback callback);

  // All of the following on the thread, once there is one.
  void receive(const Event& event);
  void receive(const RawInput& input);
  void pressKey(double time, std::uint32_t detail);
  void releaseKey(std::uint32_t detail);
  void changeButton(double time, const RawInput& input);
  void scroll(double time, const ScrollSteps& steps);
  void tellKey(double time, XKeyCode key);
  /// The result is in how many seconds the next repeat is due.
  std::optional<double> tellRepeats();
  void readDevices();
  void readButtonMapping();
  std::uint32_t mapped(std::uint32_t button) const;

  std::unique_ptr<const Connection> connection_;
  RawInputs inputs_;
  std::optional<Keyboard> keyboard_;  ///< where keys are wanted
  InputSource::Callback callback_;
  ClickCounter clicks_;
  std::map<std::uint16_t, ScrollAxes> scrollAxes_;  ///< by device
  std::vector<std::uint8_t> buttonMapping_;         ///< what buttons 1, 2, … act as
  KeyRepeat repeat_;
  std::optional<EventThread> thread_;  ///< ends before what it uses
};

}  // namespace vesk::capture::x11
