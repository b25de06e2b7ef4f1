#include "package/TrashInfo.h"

#include <fmt/format.h>

#include <algorithm>
#include <ctime>

namespace vesk::package {

namespace {

bool isUnreserved(char character) {
  constexpr std::string_view others = "-_.!~*'()/";
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || others.contains(character);
}

/// "yyyy-MM-ddTHH:mm:ss" in the local time zone.
std::string localDate(Timestamp date) {
  const auto time = std::chrono::system_clock::to_time_t(date);
  std::tm local{};
  ::localtime_r(&time, &local);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", local.tm_year + 1900, local.tm_mon + 1,
                     local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
}

}  // namespace

std::string percentEncoded(std::string_view path) {
  std::string text;
  text.reserve(path.size());
  for (const char character : path) {
    if (isUnreserved(character)) {
      text += character;
    } else {
      text += fmt::format("%{:02X}", static_cast<unsigned char>(character));
    }
  }
  return text;
}

std::string trashInfo(const std::filesystem::path& original, Timestamp deletionDate) {
  return fmt::format("[Trash Info]\nPath={}\nDeletionDate={}\n", percentEncoded(original.native()),
                     localDate(deletionDate));
}

std::string withDirectorySize(std::string_view cache, std::string_view name, std::int64_t bytes,
                              std::int64_t infoTime) {
  const auto ending = " " + percentEncoded(name);
  std::string text;
  while (!cache.empty()) {
    const auto line = cache.substr(0, cache.find('\n'));
    cache.remove_prefix(std::min(line.size() + 1, cache.size()));
    if (!line.empty() && !line.ends_with(ending)) text += fmt::format("{}\n", line);
  }
  return text + fmt::format("{} {}{}\n", bytes, infoTime, ending);
}

}  // namespace vesk::package
