#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <ostream>
#include <string>

#include "package/UserDefaults.h"

namespace vesk::package {
namespace {

/// An environment variable that gets its old value back.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_{name} {
    if (const char* old = std::getenv(name)) old_ = old;
    value == nullptr ? ::unsetenv(name) : ::setenv(name, value, 1);
  }
  ~ScopedVariable() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  const char* name_;
  std::optional<std::string> old_;
};

class UserDefaultsFile : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "vesk-defaults-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    directory_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  std::filesystem::path file() const { return directory_ / "vesk" / "defaults.json"; }
  std::filesystem::path aside(int number) const {
    return directory_ / "vesk" / ("defaults.json.corrupt-" + std::to_string(number));
  }

  static std::string contents(const std::filesystem::path& path) {
    std::ifstream stream{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
  }
  void put(const std::string& text) const {
    std::filesystem::create_directories(file().parent_path());
    std::ofstream{file(), std::ios::binary} << text;
  }

  std::filesystem::path directory_;
};

TEST_F(UserDefaultsFile, aMissingFileIsEmptyAndReadingDoesNotCreateIt) {
  const UserDefaults defaults{file()};
  EXPECT_EQ(defaults.string("recordingLibraryPath"), std::nullopt);
  EXPECT_EQ(defaults.boolean("capture.microphone"), std::nullopt);
  EXPECT_EQ(defaults.number("speed"), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(directory_ / "vesk"));
}

TEST_F(UserDefaultsFile, whatIsSetIsReadByTheNextInstance) {
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("recordingLibraryPath", "/home/小明/视频"));
  ASSERT_TRUE(defaults.set("capture.microphone", true));
  ASSERT_TRUE(defaults.set("speed", 0.1));
  for (const auto& reader : {defaults, UserDefaults{file()}}) {
    EXPECT_EQ(reader.string("recordingLibraryPath"), "/home/小明/视频");
    EXPECT_EQ(reader.boolean("capture.microphone"), true);
    EXPECT_EQ(reader.number("speed"), 0.1);
  }
}

TEST_F(UserDefaultsFile, keysStandInTheFileAsTheyAreNamed) {
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("shortcut.zoomIn", "a"));
  ASSERT_TRUE(defaults.set("capture.camera", false));
  EXPECT_EQ(contents(file()), "{\n  \"capture.camera\": false,\n  \"shortcut.zoomIn\": \"a\"\n}\n");
}

TEST_F(UserDefaultsFile, aValueOfAnotherTypeCountsAsAbsent) {
  put(R"({"text": "true", "flag": true, "number": 1, "none": null})");
  const UserDefaults defaults{file()};
  EXPECT_EQ(defaults.boolean("text"), std::nullopt);
  EXPECT_EQ(defaults.number("flag"), std::nullopt);
  EXPECT_EQ(defaults.boolean("number"), std::nullopt);
  EXPECT_EQ(defaults.string("none"), std::nullopt);
}

TEST_F(UserDefaultsFile, settingAKeyAgainReplacesValueAndType) {
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("cameraMode", "放大"));
  ASSERT_TRUE(defaults.set("cameraMode", 2.0));
  EXPECT_EQ(defaults.string("cameraMode"), std::nullopt);
  EXPECT_EQ(UserDefaults{file()}.number("cameraMode"), 2.0);
}

TEST_F(UserDefaultsFile, aRemovedKeyIsGoneFromTheFile) {
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("a", true));
  ASSERT_TRUE(defaults.set("b", true));
  ASSERT_TRUE(defaults.remove("a"));
  ASSERT_TRUE(defaults.remove("never there"));
  EXPECT_EQ(defaults.boolean("a"), std::nullopt);
  EXPECT_EQ(contents(file()), "{\n  \"b\": true\n}\n");
}

TEST_F(UserDefaultsFile, whatThisVersionDoesNotReadSurvivesAChange) {
  put(R"({"future": {"list": [1, "zwei", null]}, "empty": []})");
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("capture.keyboard", false));
  const auto text = contents(file());
  EXPECT_NE(text.find("\"zwei\""), std::string::npos);
  EXPECT_NE(text.find("\"empty\": []"), std::string::npos);
  EXPECT_EQ(UserDefaults{file()}.boolean("capture.keyboard"), false);
}

TEST_F(UserDefaultsFile, keysOfAnotherRunningInstanceSurvive) {
  UserDefaults first{file()};
  UserDefaults second{file()};
  ASSERT_TRUE(first.set("mine", 1.0));
  ASSERT_TRUE(second.set("yours", 2.0));
  ASSERT_TRUE(first.set("shared", "first"));
  ASSERT_TRUE(second.set("shared", "second"));
  const UserDefaults reader{file()};
  EXPECT_EQ(reader.number("mine"), 1.0);
  EXPECT_EQ(reader.number("yours"), 2.0);
  EXPECT_EQ(reader.string("shared"), "second");
}

struct DamagedText {
  const char* name;
  std::string text;
};

void PrintTo(const DamagedText& damaged, std::ostream* stream) {
  *stream << damaged.name;
}

class DamagedUserDefaults : public UserDefaultsFile,
                            public testing::WithParamInterface<DamagedText> {};

TEST_P(DamagedUserDefaults, isSetAsideAndCountsAsEmpty) {
  put(GetParam().text);
  testing::internal::CaptureStderr();
  UserDefaults defaults{file()};
  EXPECT_NE(testing::internal::GetCapturedStderr().find("com.ordel.vesk.app error"),
            std::string::npos);
  EXPECT_EQ(defaults.boolean("a"), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(file()));
  EXPECT_EQ(contents(aside(1)), GetParam().text);
  ASSERT_TRUE(defaults.set("a", true));
  EXPECT_EQ(UserDefaults{file()}.boolean("a"), true);
}

INSTANTIATE_TEST_SUITE_P(
    Text, DamagedUserDefaults,
    testing::Values(DamagedText{"empty", ""}, DamagedText{"cutShort", "{\"a\": true"},
                    DamagedText{"noJSON", "recordingLibraryPath=/home"},
                    DamagedText{"array", "[true]"}, DamagedText{"null", "null"},
                    DamagedText{"hugeNumber", "{\"a\": 1e999}"},
                    DamagedText{"notUtf8", "{\"a\": \"\xff\"}"},
                    DamagedText{"zeroByte", std::string("{\"a\":\0 true}", 12)},
                    DamagedText{"deepNesting", "{\"a\": " + std::string(300000, '[') +
                                                   std::string(300000, ']') + "}"}));

TEST_F(UserDefaultsFile, anEarlierDamagedCopyIsNeverOverwritten) {
  for (const auto* text : {"first", "second", "third"}) {
    put(text);
    const UserDefaults defaults{file()};
  }
  EXPECT_EQ(contents(aside(1)), "first");
  EXPECT_EQ(contents(aside(2)), "second");
  EXPECT_EQ(contents(aside(3)), "third");
}

TEST_F(UserDefaultsFile, damageWhileRunningLosesNoKnownSetting) {
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("kept", "value"));
  put("{");
  ASSERT_TRUE(defaults.set("added", true));
  EXPECT_EQ(contents(aside(1)), "{");
  const UserDefaults reader{file()};
  EXPECT_EQ(reader.string("kept"), "value");
  EXPECT_EQ(reader.boolean("added"), true);
}

TEST_F(UserDefaultsFile, aNumberThatIsNotFiniteIsRefused) {
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("speed", 1.5));
  for (const double value :
       {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    const auto result = defaults.set("speed", value);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().kind, PackageError::Kind::outOfRange);
  }
  EXPECT_EQ(UserDefaults{file()}.number("speed"), 1.5);
}

TEST_F(UserDefaultsFile, textThatIsNotUtf8IsRefusedAndChangesNothing) {
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("path", "/a"));
  const auto result = defaults.set("path", "/\xff");
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().kind, PackageError::Kind::notUtf8);
  EXPECT_EQ(defaults.string("path"), "/a");
  EXPECT_EQ(UserDefaults{file()}.string("path"), "/a");
}

TEST_F(UserDefaultsFile, aFileThatCannotBeReadIsNotReplaced) {
  std::filesystem::create_directories(file());  // a directory bears the name
  UserDefaults defaults{file()};
  const auto result = defaults.set("a", true);
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().kind, PackageError::Kind::fileUnreadable);
  EXPECT_EQ(defaults.boolean("a"), std::nullopt);
  EXPECT_TRUE(std::filesystem::is_directory(file()));
}

TEST_F(UserDefaultsFile, aDirectoryThatCannotBeMadeIsAnError) {
  std::ofstream{directory_ / "vesk"} << "a file";
  UserDefaults defaults{file()};
  const auto result = defaults.set("a", true);
  ASSERT_FALSE(result);
  EXPECT_FALSE(result.error().message.empty());
  EXPECT_EQ(contents(directory_ / "vesk"), "a file");
}

TEST_F(UserDefaultsFile, noTemporaryFileStaysBehind) {
  UserDefaults defaults{file()};
  ASSERT_TRUE(defaults.set("a", true));
  ASSERT_TRUE(defaults.set("a", false));
  const std::filesystem::directory_iterator entries{file().parent_path()};
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

TEST(UserDefaults, theFileLiesInTheConfigurationDirectory) {
  const ScopedVariable home{"HOME", "/home/ada"};
  {
    const ScopedVariable config{"XDG_CONFIG_HOME", "/elsewhere"};
    EXPECT_EQ(UserDefaults::defaultFile(), "/elsewhere/vesk/defaults.json");
  }
  for (const char* unusable : {static_cast<const char*>(nullptr), "", "relative/config"}) {
    const ScopedVariable config{"XDG_CONFIG_HOME", unusable};
    EXPECT_EQ(UserDefaults::defaultFile(), "/home/ada/.config/vesk/defaults.json");
  }
}

TEST(UserDefaults, withoutAHomeInTheEnvironmentTheAccountsHomeIsTaken) {
  const ScopedVariable home{"HOME", nullptr};
  const ScopedVariable config{"XDG_CONFIG_HOME", nullptr};
  EXPECT_TRUE(UserDefaults::defaultFile().is_absolute());
}

}  // namespace
}  // namespace vesk::package
