#include "capture/x11/KeyTable.h"

#include <algorithm>
#include <array>

namespace vesk::capture::x11 {
namespace {

struct Row {
  KeyCode keyCode;
  XKeyCode xKeyCode;
};

// In the order of the keys on a keyboard, named as on an American one.
constexpr auto rows = std::to_array<Row>({
    {53, 9},     // Esc
    {122, 67},   // F1
    {120, 68},   // F2
    {99, 69},    // F3
    {118, 70},   // F4
    {96, 71},    // F5
    {97, 72},    // F6
    {98, 73},    // F7
    {100, 74},   // F8
    {101, 75},   // F9
    {109, 76},   // F10
    {103, 95},   // F11
    {111, 96},   // F12
    {105, 107},  // Print Screen, in the place of F13
    {107, 78},   // Scroll Lock, in the place of F14
    {113, 127},  // Pause, in the place of F15

    {50, 49},    // `
    {18, 10},    // 1
    {19, 11},    // 2
    {20, 12},    // 3
    {21, 13},    // 4
    {23, 14},    // 5
    {22, 15},    // 6
    {26, 16},    // 7
    {28, 17},    // 8
    {25, 18},    // 9
    {29, 19},    // 0
    {27, 20},    // -
    {24, 21},    // =
    {51, 22},    // Backspace
    {48, 23},    // Tab
    {12, 24},    // Q
    {13, 25},    // W
    {14, 26},    // E
    {15, 27},    // R
    {17, 28},    // T
    {16, 29},    // Y
    {32, 30},    // U
    {34, 31},    // I
    {31, 32},    // O
    {35, 33},    // P
    {33, 34},    // [
    {30, 35},    // ]
    {42, 51},    // the backslash, or what stands beside Return
    {57, 66},    // Caps Lock
    {0, 38},     // A
    {1, 39},     // S
    {2, 40},     // D
    {3, 41},     // F
    {5, 42},     // G
    {4, 43},     // H
    {38, 44},    // J
    {40, 45},    // K
    {37, 46},    // L
    {41, 47},    // ;
    {39, 48},    // '
    {36, 36},    // Return
    {56, 50},    // left Shift
    {10, 94},    // the key between it and Z, which American keyboards lack
    {6, 52},     // Z
    {7, 53},     // X
    {8, 54},     // C
    {9, 55},     // V
    {11, 56},    // B
    {45, 57},    // N
    {46, 58},    // M
    {43, 59},    // ,
    {47, 60},    // .
    {44, 61},    // /
    {60, 62},    // right Shift
    {59, 37},    // left Control
    {55, 133},   // left Super
    {58, 64},    // left Alt
    {49, 65},    // Space
    {61, 108},   // right Alt
    {54, 134},   // right Super
    {110, 135},  // Menu
    {62, 105},   // right Control

    {114, 118},  // Insert
    {115, 110},  // Home
    {116, 112},  // Page Up
    {117, 119},  // Delete
    {119, 115},  // End
    {121, 117},  // Page Down
    {126, 111},  // ↑
    {123, 113},  // ←
    {125, 116},  // ↓
    {124, 114},  // →

    {71, 77},   // Num Lock
    {75, 106},  // keypad /
    {67, 63},   // keypad *
    {78, 82},   // keypad -
    {89, 79},   // keypad 7
    {91, 80},   // keypad 8
    {92, 81},   // keypad 9
    {69, 86},   // keypad +
    {86, 83},   // keypad 4
    {87, 84},   // keypad 5
    {88, 85},   // keypad 6
    {83, 87},   // keypad 1
    {84, 88},   // keypad 2
    {85, 89},   // keypad 3
    {76, 104},  // keypad Enter
    {82, 90},   // keypad 0
    {65, 91},   // keypad .

    // Of larger keyboards.
    {81, 125},   // keypad =
    {95, 129},   // keypad ,
    {93, 132},   // ¥
    {94, 97},    // the underscore of Japanese keyboards
    {102, 131},  // Eisu
    {104, 130},  // Kana
    {106, 194},  // F16
    {64, 195},   // F17
    {79, 196},   // F18
    {80, 197},   // F19
    {90, 198},   // F20
});

}  // namespace

std::optional<KeyCode> keyCodeOf(XKeyCode key) {
  const auto* const row = std::ranges::find(rows, key, &Row::xKeyCode);
  if (row == rows.end()) return std::nullopt;
  return row->keyCode;
}

std::optional<XKeyCode> xKeyCodeOf(KeyCode keyCode) {
  const auto* const row = std::ranges::find(rows, keyCode, &Row::keyCode);
  if (row == rows.end()) return std::nullopt;
  return row->xKeyCode;
}

bool isModifierKey(KeyCode keyCode) {
  constexpr KeyCode first = 54;  // right Super
  constexpr KeyCode last = 62;   // right Control
  return keyCode >= first && keyCode <= last;
}

}  // namespace vesk::capture::x11
