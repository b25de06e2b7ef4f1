#include "media/EncoderMemory.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>
#include <vector>

#include "package/DurableWrite.h"
#include "package/FileText.h"
#include "package/JsonText.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t largestMemory = 1U << 16U;

std::string processorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    const std::size_t colon = line.find(": ");
    if (line.starts_with("model name") && colon != std::string::npos) {
      return line.substr(colon + 2);
    }
  }
  return "unknown processor";
}

std::vector<std::string> graphicsDevices() {
  std::vector<std::string> names;
  std::error_code ignored;
  for (const char* folder : {"/dev/dri", "/dev"}) {
    for (const auto& entry : fs::directory_iterator(folder, ignored)) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with("renderD") || name.starts_with("nvidia0")) {
        names.push_back(name);
      }
    }
  }
  std::ranges::sort(names);
  return names;
}

/// An object; an empty one where the file holds none.
nlohmann::json readMemory(const fs::path& memory) {
  const auto text = package::readWholeFile(memory, largestMemory);
  auto value = text ? package::parseJson(*text) : std::nullopt;
  return value && value->is_object() ? *std::move(value) : nlohmann::json::object();
}

}  // namespace

std::string encodingSituation(const PictureTrackSettings& settings) {
  return fmt::format("{}x{} at {} fps on {} x {} [{}], libavcodec {:x}", settings.width,
                     settings.height, settings.fps, std::thread::hardware_concurrency(),
                     processorName(), fmt::join(graphicsDevices(), " "), avcodec_version());
}

std::string rememberedEncoder(const fs::path& memory, std::string_view situation) {
  const auto values = readMemory(memory);
  const auto found = values.find(situation);
  return found != values.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::expected<void, package::PackageError> rememberEncoder(const fs::path& memory,
                                                           std::string_view situation,
                                                           std::string_view encoder) {
  auto values = readMemory(memory);
  values[std::string(situation)] = encoder;
  std::error_code ignored;  // the write tells
  fs::create_directories(memory.parent_path(), ignored);
  return package::writeFileAtomically(
      memory, values.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
}

}  // namespace vesk::media
