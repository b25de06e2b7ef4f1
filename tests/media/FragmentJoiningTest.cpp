#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "media/CaptureWriter.h"
#include "media/FragmentJoining.h"
#include "media/FragmentedMovie.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"
#include "media/TestTake.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

constexpr int fps = 30;

class FragmentJoiningTest : public testing::Test {
 protected:
  /// A movie of five seconds whose writer died.
  void SetUp() override {
    auto writer = CaptureWriter::create(file, takeSettings("libx264-ultrafast", 1)).value();
    TestSoundSource source(1);
    for (int i = 0; i < 5 * fps; ++i) {
      const double time = static_cast<double>(i) / fps;
      ASSERT_TRUE(writer.write(flatPicture(i), takeTime(time)));
      while (source.time() < time) {
        ASSERT_TRUE(writer.write(source.next()));
      }
    }
  }

  TemporaryFolder folder;
  fs::path file = folder / "screen.mov";
};

TEST_F(FragmentJoiningTest, givesOneIndexBehindTheMedia) {
  const auto packets = inspect(file).packets;
  const auto sound = storedSound(file);
  ASSERT_TRUE(joinFragments(file));
  const StoredMovie movie = inspect(file);
  EXPECT_THAT(movie.boxes, ElementsAre("ftyp", "mdat", "moov"));
  ASSERT_EQ(movie.packets.size(), packets.size());
  for (std::size_t i = 0; i < packets.size(); ++i) {
    EXPECT_EQ(movie.packets[i].pts, packets[i].pts) << i;
    EXPECT_EQ(movie.packets[i].isKey, packets[i].isKey) << i;
  }
  EXPECT_EQ(storedSound(file).payloads(), sound.payloads());
  EXPECT_EQ(storedSound(file).packets.back().pts, sound.packets.back().pts);
}

TEST_F(FragmentJoiningTest, betweenItsStepsTheMovieCanBePlayed) {
  const auto before = inspect(file).packets;
  const auto sound = storedSound(file).payloads();
  ASSERT_TRUE(appendIndex(file));
  EXPECT_EQ(inspect(file).packets.size(), before.size());
  EXPECT_EQ(storedSound(file).payloads(), sound);
}

TEST_F(FragmentJoiningTest, canBeTakenUpWhereItWasBrokenOff) {
  const auto before = inspect(file).packets.size();
  ASSERT_TRUE(appendIndex(file));
  const auto size = fs::file_size(file);
  for (const auto length : {size, size - 1, size - 100}) {
    const fs::path broken = folder / "broken.mov";
    fs::copy_file(file, broken, fs::copy_options::overwrite_existing);
    fs::resize_file(broken, length);
    EXPECT_EQ(inspect(broken).packets.size(), before);
    ASSERT_TRUE(joinFragments(broken));
    EXPECT_THAT(inspect(broken).boxes, ElementsAre("ftyp", "mdat", "moov"));
    EXPECT_EQ(inspect(broken).packets.size(), before);
    EXPECT_EQ(fs::file_size(broken), size);
  }
}

TEST_F(FragmentJoiningTest, anIncompleteFragmentIsLeftOut) {
  fs::resize_file(file, fs::file_size(file) - 1);
  ASSERT_TRUE(joinFragments(file));
  EXPECT_THAT(inspect(file).packets, SizeIs(2 * fps));
}

TEST_F(FragmentJoiningTest, theIndexAgreesWithTheFragmentsOnEverySample) {
  const auto movie = FragmentedMovie::read(RandomAccessFile::open(file).value());
  ASSERT_TRUE(movie);
  ASSERT_THAT(movie->tracks, SizeIs(2));
  EXPECT_THAT(movie->tracks[0].samples, SizeIs(4 * fps));
  EXPECT_EQ(movie->end, fs::file_size(file));
  const std::string bytes = bytesOf(file);
  const auto payloads = storedPicture(file).payloads();
  std::size_t index = 0;
  for (const auto& chunk : movie->tracks[0].chunks) {
    std::uint64_t position = chunk.position;
    for (std::uint32_t i = 0; i < chunk.sampleCount; ++i, ++index) {
      const auto size = movie->tracks[0].samples[index].size;
      ASSERT_EQ(bytes.substr(position, size), payloads[index]) << index;
      position += size;
    }
  }
  EXPECT_EQ(index, payloads.size());
}

TEST_F(FragmentJoiningTest, aMovieThatIsCompleteStaysAsItIs) {
  ASSERT_TRUE(joinFragments(file));
  const std::string before = bytesOf(file);
  const auto again = joinFragments(file);
  ASSERT_FALSE(again);
  EXPECT_THAT(again.error().message, HasSubstr("screen.mov"));
  EXPECT_EQ(bytesOf(file), before);
}

TEST_F(FragmentJoiningTest, aFileThatIsNoMovieStaysAsItIs) {
  for (const std::string& bytes :
       {std::string(), std::string("no movie"), bytesOf(file).substr(0, 700)}) {
    writeBytes(file, bytes);
    EXPECT_FALSE(joinFragments(file));
    EXPECT_EQ(bytesOf(file), bytes);
  }
}

TEST_F(FragmentJoiningTest, aMissingFileIsTold) {
  const auto joined = joinFragments(folder / "gone.mov");
  ASSERT_FALSE(joined);
  EXPECT_THAT(joined.error().message, HasSubstr("gone.mov"));
}

}  // namespace
}  // namespace vesk::media
