#pragma once

#include <cstdint>
#include <string>

namespace vesk::app {

/// A file's size as file browsers show it, in powers of 1000: "845 KB", "12.3 MB", "1.24 GB".
std::string fileSizeText(std::uintmax_t bytes);

}  // namespace vesk::app
