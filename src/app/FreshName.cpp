#include "app/FreshName.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <random>

namespace vesk::app {

std::string freshName() {
  std::random_device device;
  std::array<std::uint32_t, 4> bits{};
  for (std::uint32_t& word : bits) {
    word = device();
  }
  constexpr std::uint32_t version = 0x4000;
  constexpr std::uint32_t variant = 0x8000;
  return fmt::format("{:08x}-{:04x}-{:04x}-{:04x}-{:04x}{:08x}", bits[0], bits[1] >> 16,
                     version | (bits[1] & 0x0FFF), variant | (bits[2] >> 16 & 0x3FFF),
                     bits[2] & 0xFFFF, bits[3]);
}

}  // namespace vesk::app
