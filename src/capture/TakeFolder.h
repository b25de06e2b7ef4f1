#pragma once

#include <expected>
#include <filesystem>
#include <string>

#include "package/RecordingLibrary.h"
#include "package/RecordingMeta.h"

namespace vesk::capture {

/// Makes an empty package for a take of this date, which only the user may read. A date that is
/// taken gives way to the next second that is free. The error is for the user.
std::expected<std::filesystem::path, std::string> makeTakeFolder(
    const package::RecordingLibrary& library, package::Timestamp date);

}  // namespace vesk::capture
