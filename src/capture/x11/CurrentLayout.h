#pragma once

#include <expected>
#include <string>

#include "capture/BackendError.h"
#include "capture/KeyNames.h"

namespace vesk::capture::x11 {

/// What keys type without modifiers on the layout that the user has at the moment of each call, for
/// the names of keys. The result may be called from any thread; it asks the display server.
/// @param display as for `Connection::open`.
std::expected<KeyNames::LayoutLookup, BackendError> currentLayout(const std::string& display = {});

}  // namespace vesk::capture::x11
