#pragma once

#include <string>

namespace vesk::editor {

/// What the main player says of itself.
struct AudioDiagnostics {
  bool exists = false;
  float rate = 0;          ///< 1 while playing, else 0
  float volume = 1;        ///< of all its sound, a factor
  bool muted = false;      ///< nothing can be heard on this machine
  int trackCount = 0;      ///< sound tracks
  std::string statusText;  ///< for the user
  bool operator==(const AudioDiagnostics&) const = default;
};

}  // namespace vesk::editor
