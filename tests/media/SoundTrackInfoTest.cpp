#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>

#include "media/PictureDuration.h"
#include "media/SoundTrackInfo.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;

TEST(SoundTrackInfo, tellsTheTimeThatIsHeard) {
  const TemporaryFolder folder;
  makeSound(folder / "mic.m4a", {.seconds = 1.25, .wave = tone(300, 0.1F)});
  const auto info = soundTrackInfo(folder / "mic.m4a");
  ASSERT_TRUE(info);
  EXPECT_NEAR(info->duration, 1.25, 1e-9);
  EXPECT_TRUE(info->fits(Container::mp4));
  EXPECT_TRUE(info->fits(Container::mov));
}

TEST(SoundTrackInfo, tellsWhatAContainerCannotHold) {
  const TemporaryFolder folder;
  makeSound(folder / "old.mov",
            {.encoder = "pcm_alaw", .muxer = "mov", .seconds = 0.5, .wave = tone(300, 0.1F)});
  const auto info = soundTrackInfo(folder / "old.mov");
  ASSERT_TRUE(info);
  EXPECT_FALSE(info->fits(Container::mp4));
  EXPECT_TRUE(info->fits(Container::mov));
}

TEST(SoundTrackInfo, aFileWithoutSoundHasNone) {
  const TemporaryFolder folder;
  makeMovie(folder / "silent.mov", {.ticks = evenTicks(5, 20)});
  EXPECT_FALSE(soundTrackInfo(folder / "silent.mov"));
}

TEST(SoundTrackInfo, whatCannotBeReadHasNoSound) {
  const TemporaryFolder folder;
  writeBytes(folder / "garbage.m4a", std::string(5'000, 'x'));
  writeBytes(folder / "empty.m4a", "");
  ASSERT_EQ(::mkfifo((folder / "pipe.m4a").c_str(), 0600), 0);
  fs::create_directory(folder / "folder.m4a");
  for (const char* name : {"garbage.m4a", "empty.m4a", "pipe.m4a", "folder.m4a", "missing.m4a"}) {
    EXPECT_FALSE(soundTrackInfo(folder / name)) << name;
    EXPECT_FALSE(pictureDuration(folder / name)) << name;
  }
}

TEST(PictureDuration, countsToTheFrame) {
  const TemporaryFolder folder;
  makeMovie(folder / "movie.mov", {.ticksPerSecond = 60, .ticks = evenTicks(61, 1)});
  const auto duration = pictureDuration(folder / "movie.mov");
  ASSERT_TRUE(duration);
  EXPECT_NEAR(*duration, 61 / 60.0, 1e-9);
}

TEST(PictureDuration, aFileWithSoundOnlyHasNone) {
  const TemporaryFolder folder;
  makeSound(folder / "mic.m4a", {.wave = tone(300, 0.1F)});
  EXPECT_FALSE(pictureDuration(folder / "mic.m4a"));
}

}  // namespace
}  // namespace vesk::media
