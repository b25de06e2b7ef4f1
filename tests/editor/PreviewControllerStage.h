#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "editor/SessionStage.h"
#include "package/EditDocument.h"

namespace vesk::editor::test {

/// Sessions, and what lies in the documents of their recordings.
class PreviewControllerStage : public SessionStage {
 protected:
  static bool isSaved(const std::filesystem::path& package) {
    return std::filesystem::exists(package / "edit.json");
  }

  static package::EditDocument saved(const std::filesystem::path& package) {
    const auto loaded = package::EditDocument::load(package, {});
    return loaded.ok() != nullptr ? *loaded.ok() : package::EditDocument();
  }

  static void write(const std::filesystem::path& file, std::string_view text) {
    std::ofstream(file, std::ios::binary) << text;
  }

  static std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  /// So long that a save that was due has happened.
  static void waitForSaves() {
    runEvents(PreviewController::saveDelay + std::chrono::milliseconds(150));
  }

  static void setPipSize(PreviewController& session, double size) {
    session.changeLook([&](compositor::CompositeSettings& look) { look.pip.size = size; });
  }
};

}  // namespace vesk::editor::test
