#include "capture/x11/AccessibilityBus.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <string_view>
#include <utility>

namespace vesk::capture::x11 {
namespace {

constexpr std::uint32_t passwordText = 40;     // among AT-SPI's roles
constexpr std::uint64_t patience = 3'000'000;  // microseconds for an answer

constexpr auto busName = "org.a11y.Bus";
constexpr auto busPath = "/org/a11y/bus";
constexpr auto statusInterface = "org.a11y.Status";

std::string_view orEmpty(const char* text) {
  return text ? text : "";
}

Accessible senderOf(sd_bus_message& message) {
  return {.application = std::string{orEmpty(sd_bus_message_get_sender(&message))},
          .path = std::string{orEmpty(sd_bus_message_get_path(&message))}};
}

bool status(sd_bus& session, const char* property) {
  int isOn = 0;
  const int result = sd_bus_get_property_trivial(&session, busName, busPath, statusInterface,
                                                 property, nullptr, 'b', &isOn);
  return result >= 0 && isOn != 0;
}

bool setEnabled(sd_bus& session, bool isEnabled) {
  return sd_bus_set_property(&session, busName, busPath, statusInterface, "IsEnabled", nullptr, "b",
                             static_cast<int>(isEnabled)) >= 0;
}

/// For `poll`: the milliseconds until a time of CLOCK_MONOTONIC in microseconds.
int millisecondsUntil(std::uint64_t deadline) {
  if (deadline == UINT64_MAX) return -1;
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  const auto passed = static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
                      static_cast<std::uint64_t>(now.tv_nsec) / 1000;
  return deadline <= passed ? 0 : static_cast<int>((deadline - passed) / 1000 + 1);
}

}  // namespace

/// What the library calls with the bus as its second argument.
struct AccessibilityBus::Callback {
  template <Member member>
  static int call(sd_bus_message* message, void* bus, sd_bus_error* /*error*/) noexcept {
    (static_cast<AccessibilityBus*>(bus)->*member)(*message);
    return 0;
  }
};

void AccessibilityBus::Unreference::operator()(sd_bus* bus) const noexcept {
  sd_bus_flush_close_unref(bus);
}

void AccessibilityBus::Unreference::operator()(sd_bus_slot* slot) const noexcept {
  sd_bus_slot_unref(slot);
}

std::expected<std::unique_ptr<AccessibilityBus>, BackendError> AccessibilityBus::open() {
  auto session = openSession();
  if (!session) return std::unexpected(BackendError{"no session bus"});
  auto bus = openBus(*session);
  if (!bus) return std::unexpected(BackendError{"no accessibility bus"});
  std::unique_ptr<AccessibilityBus> opened{
      new AccessibilityBus{std::move(session), std::move(bus)}};
  if (!opened->registerEvents()) {
    return std::unexpected(BackendError{"the accessibility bus has no registry"});
  }
  opened->makeApplicationsAccessible();
  return opened;
}

AccessibilityBus::AccessibilityBus(Bus session, Bus bus)
    : session_{std::move(session)}, bus_{std::move(bus)} {}

AccessibilityBus::~AccessibilityBus() {
  // A screen reader that has come meanwhile needs them to stay so.
  if (hasEnabled_ && !status(*session_, "ScreenReaderEnabled")) setEnabled(*session_, false);
}

AccessibilityBus::Bus AccessibilityBus::openSession() {
  sd_bus* session = nullptr;
  if (sd_bus_open_user(&session) < 0) return nullptr;
  sd_bus_set_method_call_timeout(session, patience);
  return Bus{session};
}

AccessibilityBus::Bus AccessibilityBus::openBus(sd_bus& session) {
  sd_bus_message* answer = nullptr;
  const char* address = nullptr;
  const int asked =
      sd_bus_call_method(&session, busName, busPath, busName, "GetAddress", nullptr, &answer, "");
  sd_bus* opened = nullptr;
  const bool isOpen = asked >= 0 && sd_bus_message_read(answer, "s", &address) >= 0 &&
                      sd_bus_new(&opened) >= 0 && sd_bus_set_address(opened, address) >= 0 &&
                      sd_bus_set_bus_client(opened, 1) >= 0 && sd_bus_start(opened) >= 0;
  sd_bus_message_unref(answer);
  Bus bus{opened};
  if (!isOpen) return nullptr;
  sd_bus_set_method_call_timeout(opened, patience);
  return bus;
}

// Some applications talk on the bus only where somebody has said that there is a listener.
void AccessibilityBus::makeApplicationsAccessible() {
  if (status(*session_, "IsEnabled")) return;
  hasEnabled_ = setEnabled(*session_, true);
}

bool AccessibilityBus::registerEvents() {
  using This = AccessibilityBus;
  constexpr std::array events{"object:state-changed:focused", "window:activate",
                              "window:deactivate", "window:destroy"};
  const bool isRegistered = std::ranges::all_of(events, [this](const char* event) {
    return sd_bus_call_method(bus_.get(), "org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                              "org.a11y.atspi.Registry", "RegisterEvent", nullptr, nullptr, "s",
                              event) >= 0;
  });
  return isRegistered &&
         match<&This::focusChanged>(
             "type='signal',interface='org.a11y.atspi.Event.Object',"
             "member='StateChanged',arg0='focused'") &&
         match<&This::windowActivated>(
             "type='signal',interface='org.a11y.atspi.Event.Window',member='Activate'") &&
         match<&This::windowDeactivated>(
             "type='signal',interface='org.a11y.atspi.Event.Window',member='Deactivate'") &&
         match<&This::windowClosed>(
             "type='signal',interface='org.a11y.atspi.Event.Window',member='Destroy'") &&
         match<&This::ownerChanged>(
             "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''");
}

template <AccessibilityBus::Member member>
bool AccessibilityBus::match(const char* rule) {
  return sd_bus_add_match(bus_.get(), nullptr, rule, &Callback::call<member>, this) >= 0;
}

bool AccessibilityBus::process(const Bell& bell) {
  const int events = sd_bus_get_events(bus_.get());
  std::uint64_t deadline = UINT64_MAX;
  if (events < 0 || sd_bus_get_timeout(bus_.get(), &deadline) < 0) return false;
  std::array<pollfd, 2> sources{
      {{.fd = sd_bus_get_fd(bus_.get()), .events = static_cast<short>(events), .revents = 0},
       {.fd = bell.descriptor(), .events = POLLIN, .revents = 0}}};
  ::poll(sources.data(), sources.size(), millisecondsUntil(deadline));
  bell.silence();
  int result = 0;
  do {
    result = sd_bus_process(bus_.get(), nullptr);
  } while (result > 0);
  return result == 0;
}

void AccessibilityBus::focusChanged(sd_bus_message& event) {
  const char* state = nullptr;
  std::int32_t isFocused = 0;
  if (sd_bus_message_read(&event, "si", &state, &isFocused) < 0) return;
  const auto element = senderOf(event);
  if (isFocused != 0) return askRole(element);
  if (asked_ == element) question_.reset();
  focus_.unfocused(element);
}

void AccessibilityBus::windowActivated(sd_bus_message& event) {
  focus_.windowActivated(senderOf(event));
}

void AccessibilityBus::windowDeactivated(sd_bus_message& event) {
  focus_.windowDeactivated(senderOf(event));
}

// If it was the field's, the field is no more.
void AccessibilityBus::windowClosed(sd_bus_message& event) {
  const auto& field = focus_.field();
  if (field && !question_ && field->application == senderOf(event).application) askRole(*field);
}

void AccessibilityBus::ownerChanged(sd_bus_message& event) {
  const char* name = nullptr;
  if (sd_bus_message_read(&event, "s", &name) >= 0) focus_.applicationEnded(name);
}

void AccessibilityBus::askRole(const Accessible& element) {
  sd_bus_slot* question = nullptr;
  sd_bus_call_method_async(bus_.get(), &question, element.application.c_str(), element.path.c_str(),
                           "org.a11y.atspi.Accessible", "GetRole",
                           &Callback::call<&AccessibilityBus::roleTold>, this, "");
  asked_ = element;
  question_.reset(question);
}

void AccessibilityBus::roleTold(sd_bus_message& answer) {
  std::uint32_t role = 0;
  const bool isTold = sd_bus_message_is_method_error(&answer, nullptr) == 0 &&
                      sd_bus_message_read(&answer, "u", &role) >= 0;
  focus_.focused(asked_, isTold && role == passwordText);
  question_.reset();
}

}  // namespace vesk::capture::x11
