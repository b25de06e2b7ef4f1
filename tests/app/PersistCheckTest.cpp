#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "app/PersistCheck.h"
#include "app/VeskProcess.h"
#include "motion/ReportText.h"
#include "package/EditDocumentCoding.h"

namespace vesk::app {

using package::EditDocument;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

std::string head() {
  return motion::ruler() + "\n 编辑持久化自检\n" + motion::ruler() + "\n";
}

PersistedDocument unharmed() {
  const EditDocument document = documentWithoutDefaults();
  const auto& segment = document.segments->front();
  return {.written = document,
          .read = document,
          .fileSize = 1234,
          .stored = segment,
          .backAndForth = segment};
}

/// Fails for every value of the first that is also that of the second.
void expectDifferent(const nlohmann::json& values, const nlohmann::json& defaults,
                     const std::string& path) {
  for (const auto& [key, value] : values.items()) {
    const std::string place = path + "/" + key;
    if (value.is_object()) {
      expectDifferent(value, defaults.at(key), place);
    } else if (place != "/segments/0/enabled") {
      EXPECT_NE(value, defaults.value(key, nlohmann::json())) << place;
    }
  }
}

nlohmann::json jsonOf(const EditDocument& document) {
  return nlohmann::json::parse(package::encodeEditDocument(document).value());
}

}  // namespace

TEST(PersistCheck, passesWithTheSizeOfItsFile) {
  const test::VeskProcess process;
  for (int run = 0; run < 2; ++run) {
    const auto result = process.run({"--test-persist"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    const auto size =
        std::filesystem::file_size(process.home() / "tq-persist-test.recording/edit.json");
    EXPECT_EQ(result.output, head() +
                                 "  整份往返比对  ✓ 一致\n"
                                 "  段停用状态    ✓ 停用不丢失\n"
                                 "  段互转往返    ✓ 一致\n"
                                 "\n  edit.json " +
                                 std::to_string(size) + " 字节\n");
  }
}

TEST(PersistCheck, startsFromAnEmptyPackage) {
  const test::VeskProcess process;
  process.home().put("tq-persist-test.recording/edit.json/old", "");
  EXPECT_EQ(process.run({"--test-persist"}).exitCode, 0);
}

TEST(PersistCheck, aSaveThatFailsEndsIt) {
  const test::VeskProcess process;
  const auto result = process.run({"--test-persist"}, {.output = {}, .temporary = "/dev/null"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.output, StartsWith(head() + "✗ 写盘失败：没有可用的临时文件夹。\n"));
}

TEST(PersistCheck, aPackageThatCannotBeMadeEndsIt) {
  const test::VeskProcess process;
  const auto result = process.run({"--test-persist"}, {.output = {}, .temporary = "/proc"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.output, StartsWith(head() + "✗ 写盘失败：无法写入“/proc/tq-persist-test"));
}

TEST(PersistCheck, everyFieldOfItsDocumentDiffersFromItsDefault) {
  const EditDocument document = documentWithoutDefaults();
  auto values = jsonOf(document);
  EditDocument plain;
  plain.segments = {EditDocument::Segment{}};
  auto defaults = jsonOf(plain);
  expectDifferent(values.at("segments").at(0), defaults.at("segments").at(0), "/segments/0");
  values.erase("segments");
  expectDifferent(values, defaults, "");
  const auto& segments = *document.segments;
  EXPECT_EQ(segments.at(0).id, "seg-x");
  EXPECT_TRUE(segments.at(0).enabled);
  EXPECT_TRUE(segments.at(0).sourceClickTime);
  EXPECT_FALSE(segments.at(1).enabled);
}

TEST(PersistCheck, aFieldThatChangedShowsBothDocuments) {
  PersistedDocument persisted = unharmed();
  persisted.read.pip.size = 0.99;
  const CheckOutcome outcome = judge(persisted);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, StartsWith(head() + "  整份往返比对  ✗ 有字段丢失或变形\n"
                                                "  段停用状态    ✓ 停用不丢失\n"
                                                "  段互转往返    ✓ 一致\n"
                                                "\n  写入：{"));
  EXPECT_THAT(outcome.text,
              AllOf(HasSubstr("\"size\": 0.31"), HasSubstr("\n  读回：{"), HasSubstr("0.99")));
}

TEST(PersistCheck, aSegmentThatIsEnabledAgainIsNoticed) {
  PersistedDocument persisted = unharmed();
  persisted.read.segments->at(1).enabled = true;
  EXPECT_THAT(judge(persisted).text, HasSubstr("\n  段停用状态    ✗ enabled 没存\n"));
  persisted.read.segments.reset();
  const CheckOutcome outcome = judge(persisted);
  EXPECT_THAT(outcome.text, HasSubstr("\n  段停用状态    ✗ enabled 没存\n"));
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST(PersistCheck, aSegmentThatItsLiveFormChangesIsNoticed) {
  PersistedDocument persisted = unharmed();
  persisted.backAndForth.waypoints.pop_back();
  const CheckOutcome outcome = judge(persisted);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, HasSubstr("\n  段互转往返    ✗ 互转丢字段\n"));
  EXPECT_THAT(outcome.text, HasSubstr("\n  读回：{"));
}

TEST(PersistCheck, withoutFailureTheSizeIsToldAlone) {
  const CheckOutcome outcome = judge(unharmed());
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.text, EndsWith("✓ 一致\n\n  edit.json 1234 字节\n"));
}

}  // namespace vesk::app
