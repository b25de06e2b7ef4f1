#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "layers/IncludeRules.h"
#include "layers/TextRules.h"

namespace vesk::layers {
namespace {

using testing::IsEmpty;

struct SourceFile {
  std::string path;  ///< from the repository's root
  std::string text;
};

std::string contents(const std::filesystem::path& file) {
  std::ifstream stream{file, std::ios::binary};
  return {std::istreambuf_iterator<char>{stream}, {}};
}

/// The files of a directory and those below it that bear one of the extensions.
std::vector<SourceFile> filesBelow(const char* directory, std::vector<std::string> extensions) {
  const std::filesystem::path root{VESK_SOURCE_DIR};
  std::vector<SourceFile> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator{root / directory}) {
    const auto& path = entry.path();
    if (!entry.is_regular_file()) continue;
    if (std::ranges::find(extensions, path.extension().string()) == extensions.end()) continue;
    files.push_back({path.lexically_relative(root).generic_string(), contents(path)});
  }
  return files;
}

std::vector<SourceFile> layerSources() {
  return filesBelow("src", {".h", ".cpp"});
}

std::vector<SourceFile> allSources() {
  std::vector<SourceFile> sources;
  for (const auto* directory : {"src", "tests", "bench", "fuzz"}) {
    std::ranges::move(filesBelow(directory, {".h", ".cpp", ".glsl"}), std::back_inserter(sources));
  }
  return sources;
}

std::vector<SourceFile> allTexts() {
  auto texts = allSources();
  for (const auto* directory : {"src", "tests", "bench", "fuzz", "cmake", "scripts", ".ci"}) {
    std::ranges::move(filesBelow(directory, {".txt", ".cmake", ".md", ".supp", ".sh", ""}),
                      std::back_inserter(texts));
  }
  const std::filesystem::path root{VESK_SOURCE_DIR};
  for (const auto* name : {"CMakeLists.txt", "README.md", "CONTRIBUTING.md"}) {
    texts.push_back({name, contents(root / name)});
  }
  return texts;
}

template <typename Rule>
std::vector<std::string> includeBreaches(Rule rule) {
  std::vector<std::string> breaches;
  for (const auto& [path, text] : layerSources()) {
    for (const auto& include : includesIn(text)) {
      if (const auto reason = rule(path, include)) {
        breaches.push_back(path + ":" + std::to_string(include.line) + ": " + *reason);
      }
    }
  }
  return breaches;
}

TEST(SourceTree, isFound) {
  const auto isTheLog = [](const SourceFile& file) { return file.path == "src/package/Log.cpp"; };
  const auto sources = layerSources();
  const auto log = std::ranges::find_if(sources, isTheLog);
  ASSERT_NE(log, sources.end());
  EXPECT_FALSE(includesIn(log->text).empty());
}

TEST(SourceTree, includesAreWrittenFromTheRoot) {
  EXPECT_THAT(includeBreaches(relativeIncludeBreach), IsEmpty());
}

TEST(SourceTree, includesPointDownTheLayers) {
  EXPECT_THAT(includeBreaches(layerBreach), IsEmpty());
}

TEST(SourceTree, systemHeadersStayInTheBackendThatOwnsThem) {
  EXPECT_THAT(includeBreaches(backendBreach), IsEmpty());
}

TEST(SourceTree, filesAreShort) {
  std::vector<std::string> breaches;
  for (const auto& [path, text] : allSources()) {
    if (const auto reason = lengthBreach(text)) breaches.push_back(path + ": " + *reason);
  }
  EXPECT_THAT(breaches, IsEmpty());
}

TEST(SourceTree, textsStandOnTheirOwn) {
  std::vector<std::string> breaches;
  for (const auto& [path, text] : allTexts()) {
    std::istringstream stream{text};
    std::string line;
    for (std::size_t number = 1; std::getline(stream, line); ++number) {
      if (const auto reason = wordingBreach(line)) {
        breaches.push_back(path + ":" + std::to_string(number) + ": " + *reason);
      }
    }
  }
  EXPECT_THAT(breaches, IsEmpty());
}

}  // namespace
}  // namespace vesk::layers
