#pragma once

#include <filesystem>
#include <string>
#include <variant>

namespace vesk::exporting {

/// What the export panel shows.
namespace state {

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

}  // namespace state

using ExportState =
    std::variant<state::Exporting, state::Finished, state::Failed, state::Idle, state::Cancelled>;

}  // namespace vesk::exporting
