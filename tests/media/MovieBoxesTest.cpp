#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "media/MovieBoxes.h"
#include "media/MovieInput.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"

namespace vesk::media {
namespace {

std::string bigEndian(std::uint64_t value, int count) {
  std::string bytes;
  for (int i = count - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

std::string box(std::string_view type, std::string_view content) {
  return bigEndian(content.size() + 8, 4) + std::string{type} + std::string{content};
}

/// A sample table of so many samples of one size.
std::string sampleSizes(std::uint32_t count) {
  return box("stsz", bigEndian(0, 4) + bigEndian(1, 4) + bigEndian(count, 4));
}

std::string nested(std::string_view inner) {
  return box("moov", box("trak", box("mdia", box("minf", box("stbl", inner)))));
}

class MovieBoxes : public testing::Test {
 protected:
  bool claims(const std::string& bytes) const {
    writeBytes(file_, bytes);
    return claimsTooManySamples(file_);
  }
  bool isCut(const std::string& bytes) const {
    writeBytes(file_, bytes);
    return endsInsideABox(file_);
  }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "a.mov";
};

TEST_F(MovieBoxes, aTableMayClaimAsManySamplesAsTheFileHasBytes) {
  const auto size = static_cast<std::uint32_t>(nested(sampleSizes(0)).size());
  EXPECT_FALSE(claims(nested(sampleSizes(size))));
  EXPECT_TRUE(claims(nested(sampleSizes(size + 1))));
}

TEST_F(MovieBoxes, tablesOfAllTracksCountTogether) {
  const std::string track = sampleSizes(100);
  EXPECT_FALSE(claims(nested(track) + box("mdat", std::string(1000, 'x'))));
  EXPECT_TRUE(claims(nested(track) + nested(track)));
}

TEST_F(MovieBoxes, aFragmentThatClaimsMillionsIsFound) {
  const auto run = box("trun", bigEndian(0, 4) + bigEndian(16'777'226, 4));
  EXPECT_TRUE(claims(box("moof", box("traf", run))));
}

TEST_F(MovieBoxes, aTableInABoxWithALongSizeIsFound) {
  const auto table = sampleSizes(1'000'000);
  const auto longBox = bigEndian(1, 4) + "moov" + bigEndian(table.size() + 16, 8) + table;
  EXPECT_TRUE(claims(longBox));
}

TEST_F(MovieBoxes, aTableInABoxThatRunsToTheEndIsFound) {
  EXPECT_TRUE(claims(bigEndian(0, 4) + "moov" + sampleSizes(1'000'000)));
}

TEST_F(MovieBoxes, aTableInABoxThatClaimsMoreThanTheFileIsFound) {
  EXPECT_TRUE(claims(bigEndian(4000, 4) + "moov" + sampleSizes(1'000'000)));
}

TEST_F(MovieBoxes, aCompressedIndexIsNotTrusted) {
  EXPECT_TRUE(claims(box("moov", box("cmov", "?"))));
}

TEST_F(MovieBoxes, boxesThatEncloseTheirOwnKindTooOftenAreLeftAlone) {
  std::string inner = sampleSizes(1'000'000);
  for (int i = 0; i < 20; ++i) inner = box("moov", inner);
  EXPECT_FALSE(claims(inner));
}

TEST_F(MovieBoxes, whatIsNoMovieClaimsNothing) {
  EXPECT_FALSE(claims(""));
  EXPECT_FALSE(claims("plain text, and more of it"));
  EXPECT_FALSE(claimsTooManySamples(folder_ / "absent.mov"));
}

TEST_F(MovieBoxes, aHostileMovieIsRefusedBeforeItIsOpened) {
  writeBytes(file_, box("ftyp", "qt  ") + nested(sampleSizes(4'000'000'000)));
  const auto movie = openMovie(file_);
  ASSERT_FALSE(movie);
  EXPECT_EQ(movie.error().kind, MediaError::Kind::openFailed);
  EXPECT_FALSE(movie.error().message.empty());
}

TEST_F(MovieBoxes, aBoxThatIsCutOffIsNoticed) {
  EXPECT_FALSE(isCut(box("ftyp", "qt  ") + box("mdat", "12345678")));
  EXPECT_TRUE(isCut(box("ftyp", "qt  ") + box("mdat", "12345678").substr(0, 12)));
}

}  // namespace
}  // namespace vesk::media
