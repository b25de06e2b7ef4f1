#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "app/DecodeResilienceCheck.h"
#include "app/VeskProcess.h"
#include "motion/ReportText.h"
#include "package/EditDocumentCoding.h"

namespace vesk::app {

using package::EditDocument;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

constexpr package::Timestamp now{std::chrono::seconds(1795167667)};

/// The reading of this program, but with every document changed.
EditDocumentReading changing(void (*change)(EditDocument& document)) {
  EditDocumentReading reading = EditDocumentReading::real();
  reading.decode = [change](std::string_view json) {
    auto document = package::decodeEditDocument(json);
    change(*document);
    return document;
  };
  return reading;
}

EditDocumentReading loading(EditDocument::LoadResult result) {
  EditDocumentReading reading = EditDocumentReading::real();
  reading.load = [result](const auto&, auto) { return result; };
  return reading;
}

std::string textAfter(const EditDocumentReading& reading) {
  const CheckOutcome outcome = checkDecodeResilience(now, reading);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, Not(HasSubstr("全部通过")));
  return outcome.text;
}

/// The verdict of one failure.
std::string listOf(std::string_view failure) {
  return motion::ruler() + "\n  ✗ 1 项不符：\n      · " + std::string(failure) + "\n";
}

}  // namespace

TEST(DecodeResilienceCheck, passesItsCases) {
  const test::VeskProcess process;
  const auto result = process.run({"--test-decode-resilience"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  const std::string ruler = motion::ruler();
  EXPECT_THAT(result.output, StartsWith(ruler + "\n edit.json 解码韧性\n" + ruler +
                                        "\n"
                                        "  ✓ 空对象 {}\n"
                                        "  ✓ 子结构缺字段\n"
                                        "  ✓ 段缺字段\n"
                                        "  ✓ 坏段只丢自己\n"
                                        "  ✓ 未知字段\n"
                                        "  ✓ segments 键缺席 = nil\n"
                                        "  ✓ segments 为空数组 = []\n"
                                        "  ✓ 坏文件报 corrupt 并已备份为 edit.json.corrupt-2"));
  EXPECT_THAT(result.output, EndsWith("Z\n" + ruler + "\n  ✓ 全部通过\n\n"));
}

TEST(DecodeResilienceCheck, removesWhatTheLastRunLeftBehindAndNothingElse) {
  const test::VeskProcess process;
  process.home().put("tq-decode-mine.recording/edit.json", "{}");
  const auto packages = [&] {
    return std::ranges::count_if(
        std::filesystem::directory_iterator(process.home().path()), [](const auto& entry) {
          return entry.path().filename().native().starts_with("tq-decode-");
        });
  };
  for (int run = 0; run < 3; ++run) {
    EXPECT_EQ(process.run({"--test-decode-resilience"}).exitCode, 0);
    EXPECT_EQ(packages(), 2);
  }
  EXPECT_TRUE(std::filesystem::exists(process.home() / "tq-decode-mine.recording/edit.json"));
}

TEST(DecodeResilienceCheck, failsItsFileCaseWhenNoPackageCanBeMade) {
  const test::VeskProcess process;
  const auto result =
      process.run({"--test-decode-resilience"}, {.output = {}, .temporary = "/dev/null"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.output, HasSubstr("\n  ✗ 无法创建合成包\n"));
  EXPECT_THAT(result.output, EndsWith(listOf("无法创建合成包")));
}

TEST(DecodeResilienceCheck, aDocumentThatDoesNotDecodeIsNamedWithItsError) {
  EditDocumentReading reading = EditDocumentReading::real();
  reading.decode = [](std::string_view json) -> decltype(package::decodeEditDocument(json)) {
    if (json != R"({"segments":[]})") {
      return package::decodeEditDocument(json);
    }
    return std::unexpected(package::PackageError{.message = "坏了。"});
  };
  const std::string text = textAfter(reading);
  EXPECT_THAT(text, HasSubstr("\n  ✗ segments 为空数组 = []：整份解不出——坏了。\n"));
  EXPECT_THAT(text, EndsWith(listOf("segments 为空数组 = []：整份文档解码失败")));
}

TEST(DecodeResilienceCheck, everyRequirementThatIsMissedIsALineOfItsOwn) {
  const std::string text = textAfter(changing([](EditDocument& document) {
    document.cursor.scale = 1.5;
    document.cursor.style = "光点";
    document.cursor.smoothing = 0.25;
    document.pip.size = 0.22;
    document.ripple.opacity = 0.85;
  }));
  EXPECT_THAT(text, HasSubstr("  ✗ 空对象 {}\n  ✗ 子结构缺字段\n  ✓ 段缺字段\n"));
  EXPECT_THAT(text, EndsWith("  ✗ 6 项不符：\n"
                             "      · 兜底值不对\n"
                             "      · 已有字段没读进来（scale=1.5）\n"
                             "      · 缺失字段没兜底（style=光点）\n"
                             "      · 缺失字段没兜底（smoothing=0.25）\n"
                             "      · pip 兜底不对\n"
                             "      · ripple 兜底不对\n"));
}

TEST(DecodeResilienceCheck, oneMissedRequirementOfSeveralIsOneLine) {
  const std::string text = textAfter(changing([](EditDocument& document) {
    if (document.pip.size == 0.4) {
      document.cursor.smoothing = 0;
    }
  }));
  EXPECT_THAT(text, EndsWith(listOf("缺失字段没兜底（smoothing=0）")));
}

TEST(DecodeResilienceCheck, segmentsThatAreLostAreNoticed) {
  const std::string text =
      textAfter(changing([](EditDocument& document) { document.segments.reset(); }));
  EXPECT_THAT(text, EndsWith("  ✗ 3 项不符：\n"
                             "      · 段丢了\n"
                             "      · segments 为 nil\n"
                             "      · 应为空数组\n"));
}

TEST(DecodeResilienceCheck, segmentsThatAreTooManyAreNoticed) {
  const std::string text = textAfter(changing([](EditDocument& document) {
    if (!document.segments) {
      document.segments.emplace();
    }
    document.segments->emplace_back();
  }));
  EXPECT_THAT(text, EndsWith("  ✗ 5 项不符：\n"
                             "      · 兜底值不对\n"
                             "      · 段丢了\n"
                             "      · 期望留下 2 段，实际 3\n"
                             "      · 应为 nil，实际 1 段\n"
                             "      · 应为空数组\n"));
}

TEST(DecodeResilienceCheck, segmentsThatAreChangedAreNoticed) {
  const std::string text = textAfter(changing([](EditDocument& document) {
    if (document.segments && !document.segments->empty()) {
      document.segments->front().level = 1;
      std::ranges::reverse(*document.segments);
    }
  }));
  EXPECT_THAT(text, EndsWith("  ✗ 2 项不符：\n"
                             "      · 段内兜底不对\n"
                             "      · 留下的段不对：c、a\n"));
}

TEST(DecodeResilienceCheck, aKnownKeyBesideUnknownOnesMustBeRead) {
  const std::string text = textAfter(changing([](EditDocument& document) {
    if (document.cursor.style == "光点") {
      document.cursor.style = "箭头";
    }
  }));
  EXPECT_THAT(text, EndsWith(listOf("已知字段没读进来")));
}

TEST(DecodeResilienceCheck, aDamagedFileMustNotLoad) {
  const std::string text = textAfter(loading({EditDocument()}));
  EXPECT_THAT(text, HasSubstr("\n  ✗ 坏文件居然解出来了\n"));
  EXPECT_THAT(text, EndsWith(listOf("坏文件解码成功")));
}

TEST(DecodeResilienceCheck, aDamagedFileMustNotCountAsAbsent) {
  const std::string text = textAfter(loading({}));
  EXPECT_THAT(text, HasSubstr("\n  ✗ 坏文件被当成「文件不存在」——下次存盘就会把它覆盖掉\n"));
  EXPECT_THAT(text, EndsWith(listOf("坏文件被误判为 none")));
}

TEST(DecodeResilienceCheck, aDamagedFileMustHaveACopy) {
  EditDocument::LoadResult::Corrupt corrupt;
  for (const bool hasPath : {false, true}) {
    if (hasPath) {
      corrupt.backup = "/nonexistent/edit.json.corrupt-x";
    }
    const std::string text = textAfter(loading({corrupt}));
    EXPECT_THAT(text, HasSubstr("\n  ✗ 报了 corrupt 但没备份成原文件\n"));
    EXPECT_THAT(text, EndsWith(listOf("坏文件没备份")));
  }
}

}  // namespace vesk::app
