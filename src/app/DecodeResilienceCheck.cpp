#include "app/DecodeResilienceCheck.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "export/Uuid.h"
#include "package/EditDocumentCoding.h"
#include "package/FileText.h"

namespace vesk::app {
namespace {

namespace fs = std::filesystem;
using package::EditDocument;
using Failures = std::vector<std::string>;

struct DecodeCase {
  std::string_view name;
  std::string_view json;
  Failures (*failures)(const EditDocument& document);
};

std::string countOfSegments(const EditDocument& document) {
  return document.segments ? fmt::format("{} 段", document.segments->size()) : "nil";
}

Failures ofEmptyObject(const EditDocument& document) {
  const bool holds = document.cursor.style == "箭头" && document.pip.size == 0.22 &&
                     document.frame.padding == 0.07 && !document.segments;
  return holds ? Failures{} : Failures{"兜底值不对"};
}

Failures ofPartialRecords(const EditDocument& document) {
  Failures failures;
  const auto& cursor = document.cursor;
  if (cursor.scale != 2.0) {
    failures.push_back(fmt::format("已有字段没读进来（scale={}）", cursor.scale));
  }
  if (cursor.style != "箭头") {
    failures.push_back(fmt::format("缺失字段没兜底（style={}）", cursor.style));
  }
  if (cursor.smoothing != 0.7) {
    failures.push_back(fmt::format("缺失字段没兜底（smoothing={}）", cursor.smoothing));
  }
  if (document.pip.size != 0.4) {
    failures.emplace_back("pip 兜底不对");
  }
  if (document.ripple.opacity != 0.5) {
    failures.emplace_back("ripple 兜底不对");
  }
  return failures;
}

Failures ofPartialSegment(const EditDocument& document) {
  if (!document.segments || document.segments->size() != 1) {
    return {"段丢了"};
  }
  const auto& segment = document.segments->front();
  const bool holds = segment.level == 2.0 && segment.deadzone == 0.67 && segment.waypoints.empty();
  return holds ? Failures{} : Failures{"段内兜底不对"};
}

Failures ofBadSegment(const EditDocument& document) {
  if (!document.segments) {
    return {"segments 为 nil"};
  }
  std::vector<std::string> ids;
  for (const auto& segment : *document.segments) {
    ids.push_back(segment.id);
  }
  if (ids.size() != 2) {
    return {fmt::format("期望留下 2 段，实际 {}", ids.size())};
  }
  if (ids != std::vector<std::string>{"a", "c"}) {
    return {fmt::format("留下的段不对：{}", fmt::join(ids, "、"))};
  }
  return {};
}

Failures ofUnknownKeys(const EditDocument& document) {
  return document.cursor.style == "光点" ? Failures{} : Failures{"已知字段没读进来"};
}

Failures ofAbsentSegments(const EditDocument& document) {
  return !document.segments ? Failures{} : Failures{"应为 nil，实际 " + countOfSegments(document)};
}

Failures ofEmptySegments(const EditDocument& document) {
  const bool holds = document.segments && document.segments->empty();
  return holds ? Failures{} : Failures{"应为空数组"};
}

constexpr std::array decodeCases{
    DecodeCase{"空对象 {}", "{}", ofEmptyObject},
    DecodeCase{"子结构缺字段",
               R"({"cursor":{"scale":2.0},"pip":{"size":0.4},"ripple":{"opacity":0.5}})",
               ofPartialRecords},
    DecodeCase{"段缺字段", R"({"segments":[{"id":"a","start":1,"end":3}]})", ofPartialSegment},
    DecodeCase{
        "坏段只丢自己",
        R"({"segments":[{"id":"a","start":1,"end":3},{"id":"b"},{"id":"c","start":5,"end":7}]})",
        ofBadSegment},
    DecodeCase{"未知字段", R"({"cursor":{"style":"光点","glow":9},"futureKey":true})",
               ofUnknownKeys},
    DecodeCase{"segments 键缺席 = nil", "{}", ofAbsentSegments},
    DecodeCase{"segments 为空数组 = []", R"({"segments":[]})", ofEmptySegments},
};

void runCase(const DecodeCase& decodeCase, const EditDocumentReading& reading, SelfCheck& check) {
  const auto document = reading.decode(decodeCase.json);
  if (!document) {
    check.result(false,
                 fmt::format("{}：整份解不出——{}", decodeCase.name, document.error().message));
    check.collect(fmt::format("{}：整份文档解码失败", decodeCase.name));
    return;
  }
  Failures failures = decodeCase.failures(*document);
  check.result(failures.empty(), decodeCase.name);
  for (std::string& failure : failures) {
    check.collect(std::move(failure));
  }
}

constexpr std::string_view packagePrefix = "tq-decode-";
constexpr std::string_view packageSuffix = ".recording";

bool isPackageOfThisCheck(const fs::path& path) {
  const std::string name = path.filename();
  return name.size() == packagePrefix.size() + exporting::uuidLength + packageSuffix.size() &&
         name.starts_with(packagePrefix) && name.ends_with(packageSuffix);
}

void removePackagesOfEarlierRuns(const fs::path& temporary) {
  std::error_code error;
  std::vector<fs::path> leftovers;
  for (fs::directory_iterator entry(temporary, error), end; !error && entry != end;
       entry.increment(error)) {
    if (isPackageOfThisCheck(entry->path())) {
      leftovers.push_back(entry->path());
    }
  }
  for (const fs::path& leftover : leftovers) {
    fs::remove_all(leftover, error);
  }
}

/// A package whose edit document is none.
std::optional<fs::path> makeDamagedPackage() {
  std::error_code error;
  const fs::path temporary = fs::temp_directory_path(error);
  if (error) {
    return std::nullopt;
  }
  removePackagesOfEarlierRuns(temporary);
  fs::path package =
      temporary / fmt::format("{}{}{}", packagePrefix, exporting::newUuid(), packageSuffix);
  fs::create_directory(package, error);
  if (!package::writeFile(package / "edit.json", "{ 这不是 JSON")) {
    return std::nullopt;
  }
  return package;
}

void runFileCase(package::Timestamp now, const EditDocumentReading& reading, SelfCheck& check) {
  const auto package = makeDamagedPackage();
  if (!package) {
    check.result(false, "无法创建合成包");
    check.collect("无法创建合成包");
    return;
  }
  const auto loaded = reading.load(*package, now);
  if (loaded.ok() != nullptr) {
    check.result(false, "坏文件居然解出来了");
    check.collect("坏文件解码成功");
    return;
  }
  const auto* const corrupt = loaded.corrupt();
  if (corrupt == nullptr) {
    check.result(false, "坏文件被当成「文件不存在」——下次存盘就会把它覆盖掉");
    check.collect("坏文件被误判为 none");
    return;
  }
  std::error_code error;
  if (!corrupt->backup || !fs::exists(*corrupt->backup, error)) {
    check.result(false, "报了 corrupt 但没备份成原文件");
    check.collect("坏文件没备份");
    return;
  }
  check.result(true, "坏文件报 corrupt 并已备份为 " + corrupt->backup->filename().string());
}

}  // namespace

EditDocumentReading EditDocumentReading::real() {
  return {.decode = package::decodeEditDocument, .load = Document::load};
}

CheckOutcome checkDecodeResilience(package::Timestamp now, const EditDocumentReading& reading) {
  SelfCheck check(" edit.json 解码韧性");
  for (const DecodeCase& decodeCase : decodeCases) {
    runCase(decodeCase, reading, check);
  }
  runFileCase(now, reading, check);
  return check.finishWithList("全部通过\n");
}

}  // namespace vesk::app
