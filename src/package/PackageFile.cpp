#include "package/PackageFile.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "package/FileError.h"
#include "package/FileText.h"

namespace vesk::package {

namespace fs = std::filesystem;

namespace {

/// Whether a path lies below a directory, both without links.
bool liesIn(const fs::path& directory, const fs::path& path) {
  const auto [end, rest] = std::ranges::mismatch(directory, path);
  return end == directory.end() && rest != path.end();
}

PackageError refused(const fs::path& file, const std::error_code& error) {
  return unreadable(file, causeInWords(error.value()));
}

/// The first reason not to touch what stands under the path.
std::optional<PackageError> refusal(const fs::path& package, const fs::path& file) {
  std::error_code error;
  const fs::path home = fs::canonical(package, error);
  if (error) return refused(file, error);
  const fs::path target = fs::canonical(file, error);
  if (error == std::errc::no_such_file_or_directory) {
    return unreadable(file, "它是一个链接，指向的文件不存在");
  }
  if (error) return refused(file, error);
  if (!liesIn(home, target)) return unreadable(file, "它是一个链接，指向录制包之外");
  if (!fs::is_regular_file(target, error)) return unreadable(file, "它不是普通文件");
  return std::nullopt;
}

}  // namespace

std::expected<std::optional<fs::path>, PackageError> packageFile(const fs::path& package,
                                                                 std::string_view name) {
  fs::path file = package / name;
  std::error_code error;
  const fs::file_status status = fs::symlink_status(file, error);
  if (status.type() == fs::file_type::not_found) return std::nullopt;
  if (error) return std::unexpected(refused(file, error));
  if (auto reason = refusal(package, file)) return std::unexpected(*std::move(reason));
  return file;
}

std::expected<std::string, PackageError> readPackageFile(const fs::path& package,
                                                         std::string_view name,
                                                         std::uintmax_t limit) {
  const auto file = packageFile(package, name);
  if (!file) return std::unexpected(file.error());
  return readWholeFile(file->value_or(package / name), limit);
}

}  // namespace vesk::package
