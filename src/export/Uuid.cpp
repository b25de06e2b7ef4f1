#include "export/Uuid.h"

#include <fmt/format.h>

#include <cstdint>
#include <random>

namespace vesk::exporting {

std::string newUuid() {
  std::random_device device;
  const auto bits = [&](unsigned count) { return std::uint64_t{device()} & ((1ULL << count) - 1); };
  return fmt::format("{:08X}-{:04X}-4{:03X}-{:04X}-{:08X}{:04X}", bits(32), bits(16), bits(12),
                     0x8000 | bits(14), bits(32), bits(16));
}

}  // namespace vesk::exporting
