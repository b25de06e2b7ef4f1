#pragma once

#include <expected>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "package/CaptureScope.h"

namespace vesk::package {

/// The scope as an object with one key, the name of the case: {"display":{"_0":7}},
/// {"window":{"_0":1234}} or {"region":{"displayID":7,"rect":[[x,y],[width,height]]}}.
nlohmann::json encodeCaptureScope(const CaptureScope& scope);

/// The reverse. The failure is a clause in the user's language without its full stop.
std::expected<CaptureScope, std::string> decodeCaptureScope(const nlohmann::json& json);

}  // namespace vesk::package
