#pragma once

#include <filesystem>
#include <string>
#include <variant>

namespace vesk::exporting {

/// What the export panel shows.
namespace exportState {

struct Exporting {
  double progress = 0;  ///< 0…1
  bool operator==(const Exporting&) const = default;
};
struct Finished {
  std::filesystem::path url;  ///< the movie
  bool operator==(const Finished&) const = default;
};
struct Failed {
  std::string text;  ///< a sentence for the user
  bool operator==(const Failed&) const = default;
};
struct Idle {
  bool operator==(const Idle&) const = default;
};
struct Cancelled {
  bool operator==(const Cancelled&) const = default;
};

}  // namespace exportState

using ExportState = std::variant<exportState::Exporting, exportState::Finished, exportState::Failed,
                                 exportState::Idle, exportState::Cancelled>;

}  // namespace vesk::exporting
