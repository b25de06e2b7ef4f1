#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "package/TemporaryDirectory.h"

namespace vesk::app::test {

/// Runs the real executable in a home of its own, with no display, no session bus and no sound
/// server in its environment. Its settings name the folder "library" there as that of the
/// recordings.
class VeskProcess {
 public:
  VeskProcess();

  struct Result {
    int exitCode = -1;  ///< −1 when a signal ended it
    std::string output;
    std::string errors;
  };

  struct Surroundings {
    std::filesystem::path output;     ///< of standard output; a file that is read back when empty
    std::filesystem::path temporary;  ///< the temporary directory; the home when empty
    std::vector<std::string> variables;  ///< more of them, as "NAME=value"
  };

  Result run(const std::vector<std::string>& arguments, const Surroundings& surroundings) const;
  Result run(const std::vector<std::string>& arguments) const { return run(arguments, {}); }

  /// The working directory of the process, its home and its temporary directory.
  const package::TemporaryDirectory& home() const { return home_; }

 private:
  package::TemporaryDirectory home_;
};

}  // namespace vesk::app::test
