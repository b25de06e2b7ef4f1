#pragma once

#include <string>

namespace vesk::exporting {

/// Why an export ended without a movie.
struct ExportError {
  enum class Kind { readerFailed, writerFailed, noVideoTrack, cancelled };
  Kind kind = Kind::writerFailed;
  std::string message;  ///< the cause, for readerFailed and writerFailed
  bool operator==(const ExportError&) const = default;

  static ExportError readerFailed(std::string message) {
    return {Kind::readerFailed, std::move(message)};
  }
  static ExportError writerFailed(std::string message) {
    return {Kind::writerFailed, std::move(message)};
  }
  static ExportError noVideoTrack() { return {Kind::noVideoTrack, {}}; }
  static ExportError cancelled() { return {Kind::cancelled, {}}; }

  /// The whole sentence for the user.
  std::string description() const;
};

}  // namespace vesk::exporting
