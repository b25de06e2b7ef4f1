#pragma once

#include <expected>
#include <filesystem>
#include <functional>

#include "export/ExportError.h"
#include "export/ExportSettings.h"

namespace vesk::exporting {

/// An export that is ready to run, on the thread that made it.
class MovieExport {
 public:
  using Progress = std::function<void(double)>;

  MovieExport() = default;
  MovieExport(const MovieExport&) = delete;
  MovieExport& operator=(const MovieExport&) = delete;
  virtual ~MovieExport() = default;

  /// Writes the movie to `to`, once.
  /// @param progress gets the share that is done, 0…1, on the calling thread.
  virtual std::expected<void, ExportError> run(const ExportSettings& settings,
                                               const std::filesystem::path& to,
                                               const Progress& progress) = 0;

  /// Ends run() soon with `cancelled`, also when it has not begun. May be called from any thread.
  virtual void cancel() = 0;
};

}  // namespace vesk::exporting
