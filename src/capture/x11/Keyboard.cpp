#include "capture/x11/Keyboard.h"

// A field of a structure in there is called so.
#define explicit explicitFlags
#include <xcb/xkb.h>
#undef explicit
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <utility>

namespace vesk::capture::x11 {
namespace {

constexpr std::uint16_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;
constexpr std::uint16_t followedEvents =
    XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
    XCB_XKB_EVENT_TYPE_STATE_NOTIFY | XCB_XKB_EVENT_TYPE_CONTROLS_NOTIFY;
constexpr std::uint16_t followedParts =
    XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;

/// Keys that type nothing, by their symbols.
struct FunctionKeys {
  xkb_keysym_t first;
  xkb_keysym_t count;
  std::uint32_t character;  ///< of the first, from the private use area
};

constexpr auto functionKeys = std::to_array<FunctionKeys>({
    {XKB_KEY_Up, 1, 0xF700},
    {XKB_KEY_Down, 1, 0xF701},
    {XKB_KEY_Left, 1, 0xF702},
    {XKB_KEY_Right, 1, 0xF703},
    {XKB_KEY_F1, 35, 0xF704},
    {XKB_KEY_Insert, 1, 0xF727},
    {XKB_KEY_Delete, 1, 0xF728},
    {XKB_KEY_Home, 1, 0xF729},
    {XKB_KEY_End, 1, 0xF72B},
    {XKB_KEY_Page_Up, 1, 0xF72C},
    {XKB_KEY_Page_Down, 1, 0xF72D},
    {XKB_KEY_Print, 1, 0xF72E},
    {XKB_KEY_Scroll_Lock, 1, 0xF72F},
    {XKB_KEY_Pause, 1, 0xF730},
    {XKB_KEY_Menu, 1, 0xF735},
    {XKB_KEY_Num_Lock, 1, 0xF739},
});

/// Empty for a key that types.
std::string functionKeyCharacter(xkb_keysym_t symbol) {
  constexpr xkb_keysym_t unicode = 0x01000000;
  for (const auto& keys : functionKeys) {
    if (symbol < keys.first || symbol >= keys.first + keys.count) continue;
    std::array<char, 8> text{};
    xkb_keysym_to_utf8(unicode + keys.character + symbol - keys.first, text.data(), text.size());
    return text.data();
  }
  return {};
}

/// Nothing when the server does not have the extension.
std::optional<std::uint8_t> firstEventOfExtension(const Connection& connection) {
  std::uint8_t firstEvent = 0;
  const int succeeded = xkb_x11_setup_xkb_extension(
      connection.get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
      XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &firstEvent, nullptr);
  if (succeeded == 0) return std::nullopt;
  return firstEvent;
}

}  // namespace

void Keyboard::Release::operator()(xkb_context* context) const noexcept {
  xkb_context_unref(context);
}

void Keyboard::Release::operator()(xkb_keymap* keymap) const noexcept {
  xkb_keymap_unref(keymap);
}

void Keyboard::Release::operator()(xkb_state* state) const noexcept {
  xkb_state_unref(state);
}

std::expected<Keyboard, BackendError> Keyboard::open(const Connection& connection) {
  const auto firstEvent = firstEventOfExtension(connection);
  if (!firstEvent) return std::unexpected(BackendError{"X 显示服务器没有 XKB 扩展"});
  Keyboard keyboard{connection, *firstEvent};
  keyboard.selectEvents();
  keyboard.readState();
  keyboard.refresh();
  if (!keyboard.keymap_) return std::unexpected(BackendError{"读不到键盘布局"});
  return keyboard;
}

Keyboard::Keyboard(const Connection& connection, std::uint8_t firstEvent)
    : connection_{&connection},
      firstEvent_{firstEvent},
      context_{xkb_context_new(XKB_CONTEXT_NO_FLAGS)} {}

void Keyboard::selectEvents() const {
  const xcb_xkb_select_events_details_t noDetails{};
  xcb_xkb_select_events_aux(connection_->get(), coreKeyboard, followedEvents, 0, followedEvents,
                            followedParts, followedParts, &noDetails);
}

void Keyboard::follow(const Event& event) {
  if (event.type() != firstEvent_) return;
  // All events of the extension have one type and begin alike.
  const auto& state = event.as<xcb_xkb_state_notify_event_t>();
  if (state.xkbType != XCB_XKB_STATE_NOTIFY) {
    isStale_ = true;
    return;
  }
  modifiers_ = state.mods;
  group_ = state.group;
}

ModifierFlags Keyboard::modifierFlags() {
  refresh();
  return bits_.flagsOf(modifiers_);
}

std::string Keyboard::typed(KeyCode keyCode) {
  refresh();
  const auto key = xKeyCodeOf(keyCode);
  if (!key) return {};
  const auto modifiers = modifiers_ & (XCB_MOD_MASK_SHIFT | bits_.numLock);
  auto character = functionKeyCharacter(symbol(*key, modifiers));
  return character.empty() ? text(*key, modifiers) : character;
}

std::string Keyboard::typedAlone(KeyCode keyCode) {
  refresh();
  const auto key = xKeyCodeOf(keyCode);
  if (!key) return {};
  auto typed = text(*key, bits_.numLock);  // with which the keypad types digits
  const bool isControl = typed.size() == 1 && (typed.front() < ' ' || typed.front() == '\x7F');
  return isControl ? std::string{} : typed;
}

std::optional<RepeatRate> Keyboard::repeatRate(XKeyCode key) {
  refresh();
  const bool repeats = (repeatingKeys_[key / 8] >> (key % 8) & 1) != 0;
  return repeats ? rate_ : std::nullopt;
}

void Keyboard::leaveOutFalseReleases(const Connection& connection) {
  if (!firstEventOfExtension(connection)) return;
  constexpr std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
  owned(xcb_xkb_per_client_flags_reply(
      connection.get(),
      xcb_xkb_per_client_flags(connection.get(), coreKeyboard, flag, flag, 0, 0, 0), nullptr));
}

void Keyboard::refresh() {
  if (!std::exchange(isStale_, false)) return;
  readLayout();
  readRepeats();
  bits_ = readModifierBits(*connection_);
}

void Keyboard::readLayout() {
  auto* const connection = connection_->get();
  const auto device = xkb_x11_get_core_keyboard_device_id(connection);
  std::unique_ptr<xkb_keymap, Release> keymap{xkb_x11_keymap_new_from_device(
      context_.get(), connection, device, XKB_KEYMAP_COMPILE_NO_FLAGS)};
  if (!keymap) return;  // what was known before is the better guess
  state_.reset(xkb_state_new(keymap.get()));
  keymap_ = std::move(keymap);
}

void Keyboard::readState() {
  const auto state = owned(xcb_xkb_get_state_reply(
      connection_->get(), xcb_xkb_get_state(connection_->get(), coreKeyboard), nullptr));
  if (!state) return;
  modifiers_ = state->mods;
  group_ = state->group;
}

void Keyboard::readRepeats() {
  const auto controls = owned(xcb_xkb_get_controls_reply(
      connection_->get(), xcb_xkb_get_controls(connection_->get(), coreKeyboard), nullptr));
  if (!controls) return;
  std::ranges::copy(controls->perKeyRepeat, repeatingKeys_.begin());
  rate_.reset();
  if ((controls->enabledControls & XCB_XKB_BOOL_CTRL_REPEAT_KEYS) == 0) return;
  if (controls->repeatInterval == 0) return;
  rate_ = RepeatRate{.delay = controls->repeatDelay / 1000.0,
                     .interval = controls->repeatInterval / 1000.0};
}

std::uint32_t Keyboard::symbol(XKeyCode key, std::uint32_t modifiers) const {
  xkb_state_update_mask(state_.get(), modifiers, 0, 0, 0, 0, group_);
  return xkb_state_key_get_one_sym(state_.get(), key);
}

std::string Keyboard::text(XKeyCode key, std::uint32_t modifiers) const {
  xkb_state_update_mask(state_.get(), modifiers, 0, 0, 0, 0, group_);
  std::array<char, 64> text{};
  xkb_state_key_get_utf8(state_.get(), key, text.data(), text.size());
  return text.data();
}

}  // namespace vesk::capture::x11
