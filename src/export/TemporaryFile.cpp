#include "export/TemporaryFile.h"

#include <fmt/format.h>

#include <system_error>

#include "export/Uuid.h"

namespace vesk::exporting {
TemporaryFile::TemporaryFile(const std::filesystem::path& folder, std::string_view prefix,
                             std::string_view extension)
    : path_(folder / fmt::format("{}{}{}", prefix, newUuid(), extension)) {}

TemporaryFile::~TemporaryFile() {
  if (!isKept_) {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
}

}  // namespace vesk::exporting
