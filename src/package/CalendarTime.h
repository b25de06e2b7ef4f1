#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace vesk::package {

/// An instant as ISO 8601 in UTC with whole seconds: "2026-11-20T09:41:07Z".
std::string iso8601(std::chrono::sys_seconds instant);

/// Reads "2026-11-20T09:41:07" followed by "Z" or an offset ("+08:00", "+0800"); a fraction of a
/// second is accepted and dropped. Nothing when the text is of another form or no such day or time
/// exists.
std::optional<std::chrono::sys_seconds> instantFromISO8601(std::string_view text);

/// "yyyyMMdd-HHmmss" in the local time zone.
std::string localStamp(std::chrono::sys_seconds instant);

}  // namespace vesk::package
