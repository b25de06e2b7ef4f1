#include "package/VideosFolder.h"

#include <algorithm>
#include <optional>
#include <string>

namespace vesk::package {

namespace {

/// The text between the double quotes at its start and end-of-quote, without escapes.
std::optional<std::string> unquoted(std::string_view text) {
  if (!text.starts_with('"')) return std::nullopt;
  std::string result;
  for (std::size_t at = 1; at < text.size(); ++at) {
    if (text[at] == '"') return result;
    if (text[at] == '\\' && at + 1 < text.size()) ++at;
    result += text[at];
  }
  return std::nullopt;
}

/// The folder that one line names, or nothing when it is about something else.
std::optional<std::filesystem::path> folderOfLine(std::string_view line,
                                                  const std::filesystem::path& home) {
  constexpr std::string_view assignment = "XDG_VIDEOS_DIR=";
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  if (!line.starts_with(assignment)) return std::nullopt;
  const auto value = unquoted(line.substr(assignment.size()));
  if (!value) return std::nullopt;
  if (*value == "$HOME") return home;
  constexpr std::string_view homePrefix = "$HOME/";
  if (value->starts_with(homePrefix)) return home / value->substr(homePrefix.size());
  if (value->starts_with('/')) return *value;
  return std::nullopt;
}

}  // namespace

std::filesystem::path videosFolder(const std::filesystem::path& home, std::string_view userDirs) {
  std::filesystem::path folder = home / "Videos";
  while (!userDirs.empty()) {
    const std::string_view line = userDirs.substr(0, userDirs.find('\n'));
    userDirs.remove_prefix(std::min(line.size() + 1, userDirs.size()));
    if (auto named = folderOfLine(line, home)) folder = *std::move(named);
  }
  return folder;
}

}  // namespace vesk::package
