#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "package/EditDocument.h"
#include "package/PackageError.h"

namespace vesk::package {

/// Reads a document. Absent and null keys take their defaults, unknown keys are ignored. A segment
/// or a waypoint that lacks a required key or has a value of the wrong type loses only itself;
/// everywhere else a value of the wrong type fails the whole decode.
std::expected<EditDocument, PackageError> decodeEditDocument(std::string_view json);

/// Pretty UTF-8 JSON with sorted keys; `segments` and `sourceClickTime` only when they have a
/// value. Fails for a number that is not finite and for a string that is not UTF-8, which JSON
/// cannot hold.
std::expected<std::string, PackageError> encodeEditDocument(const EditDocument& document);

}  // namespace vesk::package
