#include "package/EditDocument.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include "package/CalendarTime.h"
#include "package/DurableWrite.h"
#include "package/EditDocumentCoding.h"
#include "package/FileError.h"
#include "package/FileText.h"
#include "package/Log.h"
#include "package/PackageFile.h"

namespace vesk::package {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view fileName = "edit.json";
// An hour of effects has some 100 KB. A larger file is no document of ours, and parsing it would
// take many times its size in memory.
constexpr std::uintmax_t largestDocument = std::uintmax_t{16} << 20;

/// Makes a copy under the first name of the series that is free.
/// @param copyTo makes the copy at a path; its failure is an errno value.
template <typename CopyTo>
std::optional<fs::path> backUp(const fs::path& file, Timestamp now, CopyTo copyTo) {
  std::string stamp = iso8601(now);
  std::ranges::replace(stamp, ':', '-');
  constexpr int mostCopies = 1000;
  for (int number = 1; number <= mostCopies; ++number) {
    fs::path copy = file;
    copy += fmt::format(".corrupt-{}{}", stamp, number > 1 ? fmt::format("-{}", number) : "");
    const std::expected<void, int> copied = copyTo(copy);
    if (copied) return copy;
    if (copied.error() == EEXIST) continue;
    log(LogCategory::project).error("{} 没能备份：{}", fileName, causeInWords(copied.error()));
    return std::nullopt;
  }
  return std::nullopt;
}

std::optional<fs::path> backUpText(const fs::path& file, std::string_view text, Timestamp now) {
  std::error_code error;
  const auto permissions = fs::status(file, error).permissions() & fs::perms::all;
  if (error) return std::nullopt;
  return backUp(file, now, [&](const fs::path& copy) {
    return writeNewFile(copy, text, static_cast<mode_t>(permissions));
  });
}

/// Gives a file too large to be read a second name; a save replaces the first alone.
std::optional<fs::path> backUpAsLink(const fs::path& file, Timestamp now) {
  return backUp(file, now, [&](const fs::path& copy) -> std::expected<void, int> {
    std::error_code error;
    fs::create_hard_link(file, copy, error);
    if (error) return std::unexpected(error.value());
    return {};
  });
}

EditDocument::LoadResult corrupt(PackageError error, std::optional<fs::path> backup) {
  return {EditDocument::LoadResult::Corrupt{std::move(error), std::move(backup)}};
}

EditDocument::LoadResult notReadable(const PackageError& error) {
  log(LogCategory::project).error("{}", error.message);
  return {};
}

PackageError tooLarge(std::uintmax_t size) {
  return {PackageError::Kind::malformed,
          fmt::format("编辑记录“{}”已损坏：文件有 {} 字节，超过上限 {} 字节。", fileName, size,
                      largestDocument)};
}

/// Whether a regular file of the user's stands there whose contents the process may not see.
bool isSealed(const fs::path& file) {
  std::error_code error;
  return fs::symlink_status(file, error).type() == fs::file_type::regular &&
         ::access(file.c_str(), R_OK) != 0;
}

}  // namespace

EditDocument::LoadResult EditDocument::load(const fs::path& package, Timestamp now) {
  const auto found = packageFile(package, fileName);
  if (!found) return notReadable(found.error());
  if (!*found) return {};
  const fs::path& file = **found;

  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  if (!error && size > largestDocument) return corrupt(tooLarge(size), backUpAsLink(file, now));

  const auto text = readWholeFile(file, largestDocument);
  if (!text) return notReadable(text.error());
  auto document = decodeEditDocument(*text);
  if (!document) return corrupt(document.error(), backUpText(file, *text, now));
  return {*std::move(document)};
}

std::expected<void, PackageError> EditDocument::save(const fs::path& package,
                                                     FileSystemCalls& calls) const {
  const fs::path file = package / fileName;
  const auto text = encodeEditDocument(*this);
  if (!text) return std::unexpected(text.error());
  if (isSealed(file)) return std::unexpected(unwritable(file, "没有权限读取原有内容，不会覆盖它"));
  return writeFileAtomically(file, *text, calls);
}

}  // namespace vesk::package
