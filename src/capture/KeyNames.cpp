#include "capture/KeyNames.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "capture/UpperCase.h"

namespace vesk::capture {
namespace {

struct NamedKey {
  KeyCode keyCode;
  std::string_view name;
};

constexpr std::array<NamedKey, 35> namedKeys{{
    // Those that the log's key combinations name too.
    {36, "⏎"},
    {48, "⇥"},
    {49, "空格"},
    {51, "⌫"},
    {53, "esc"},
    {123, "←"},
    {124, "→"},
    {126, "↑"},
    {125, "↓"},
    // Those that only a shortcut's name needs.
    {122, "F1"},
    {120, "F2"},
    {99, "F3"},
    {118, "F4"},
    {96, "F5"},
    {97, "F6"},
    {98, "F7"},
    {100, "F8"},
    {101, "F9"},
    {109, "F10"},
    {103, "F11"},
    {111, "F12"},
    {105, "F13"},
    {107, "F14"},
    {113, "F15"},
    {50, "`"},
    {27, "-"},
    {24, "="},
    {33, "["},
    {30, "]"},
    {41, ";"},
    {39, "'"},
    {43, ","},
    {47, "."},
    {44, "/"},
    {42, "\\"},
}};
constexpr auto comboKeys = std::span{namedKeys}.first(9);

std::optional<std::string_view> nameIn(std::span<const NamedKey> keys, KeyCode keyCode) {
  const auto found = std::ranges::find(keys, keyCode, &NamedKey::keyCode);
  if (found == keys.end()) return std::nullopt;
  return found->name;
}

}  // namespace

std::optional<std::string_view> comboKeyName(KeyCode keyCode) {
  return nameIn(comboKeys, keyCode);
}

KeyNames::KeyNames(LayoutLookup layout) : layout_{std::move(layout)} {}

std::string KeyNames::name(KeyCode keyCode) const {
  if (const auto name = nameIn(namedKeys, keyCode)) return std::string{*name};
  if (const auto typed = layout_(keyCode); !typed.empty()) return upperCased(typed);
  return fmt::format("键{}", keyCode);
}

}  // namespace vesk::capture
