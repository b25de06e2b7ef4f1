#include "app/FileSizeText.h"

#include <fmt/format.h>

#include <array>
#include <string_view>

namespace vesk::app {

std::string fileSizeText(std::uintmax_t bytes) {
  struct Unit {
    std::string_view name;
    int decimals;
  };
  constexpr std::array units{Unit{"KB", 0}, Unit{"MB", 1}, Unit{"GB", 2}, Unit{"TB", 2}};
  constexpr double base = 1000;
  if (bytes < static_cast<std::uintmax_t>(base)) return fmt::format("{} 字节", bytes);
  double value = static_cast<double>(bytes) / base;
  std::size_t index = 0;
  // What would round up to a thousand belongs to the next unit.
  while (value >= base - 0.5 && index + 1 < units.size()) {
    value /= base;
    ++index;
  }
  return fmt::format("{:.{}f} {}", value, units.at(index).decimals, units.at(index).name);
}

}  // namespace vesk::app
