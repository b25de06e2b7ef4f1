#include "app/PackageLocator.h"

#include <string_view>
#include <vector>

#include "package/RecordingProject.h"

namespace vesk::app {

std::optional<std::filesystem::path> findPackage(
    const CommandLine& commandLine, const std::function<std::filesystem::path()>& libraryRoot) {
  if (const std::optional<std::string_view> named = commandLine.value("--package")) {
    return std::filesystem::path(*named);
  }
  std::vector<std::filesystem::path> packages = package::listPackages(libraryRoot());
  if (packages.empty()) {
    return std::nullopt;
  }
  return packages.front();
}

}  // namespace vesk::app
