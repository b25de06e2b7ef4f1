#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "media/JpegPicture.h"

namespace vesk::media {
namespace {

using testing::HasSubstr;

/// Smooth colours, as a scaled picture has them.
package::Picture gradient(int width, int height) {
  package::Picture picture{.width = width, .height = height, .pixels = {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (const int value : {255 * x / width, 255 * y / height, 255 - 255 * x / width}) {
        picture.pixels.push_back(static_cast<std::uint8_t>(value));
      }
    }
  }
  return picture;
}

int largestDifference(const package::Picture& a, const package::Picture& b) {
  int largest = 0;
  for (std::size_t at = 0; at < a.pixels.size(); ++at) {
    largest = std::max(largest, std::abs(a.pixels[at] - b.pixels.at(at)));
  }
  return largest;
}

/// A file whose header claims another size.
std::string resized(std::string file, int width, int height) {
  const auto frameHeader = file.find("\xFF\xC0");
  const auto put = [&](std::size_t at, int value) {
    file.at(frameHeader + at) = static_cast<char>(value >> 8);
    file.at(frameHeader + at + 1) = static_cast<char>(value & 0xff);
  };
  put(5, height);
  put(7, width);
  return file;
}

TEST(JpegPicture, whatIsEncodedComesBackMuchTheSame) {
  for (const auto& [width, height] : {std::pair{640, 360}, {361, 641}, {1, 1}, {17, 3}}) {
    const auto picture = gradient(width, height);
    const auto file = encodeJpeg(picture, 0.7);
    ASSERT_TRUE(file) << width;
    const auto decoded = decodeJpeg(*file);
    ASSERT_TRUE(decoded) << width;
    EXPECT_EQ(decoded->width, width);
    EXPECT_EQ(decoded->height, height);
    if (width > 100) {
      EXPECT_LE(largestDifference(picture, *decoded), 12);
    }
  }
}

TEST(JpegPicture, flatColoursComeBackWithinAFewLevels) {
  for (const std::array<std::uint8_t, 3> colour : {std::array<std::uint8_t, 3>{255, 0, 0},
                                                   {0, 255, 0},
                                                   {0, 0, 255},
                                                   {255, 255, 255},
                                                   {0, 0, 0},
                                                   {128, 128, 128},
                                                   {200, 40, 30}}) {
    package::Picture picture{.width = 64, .height = 64, .pixels = {}};
    for (int pixel = 0; pixel < 64 * 64; ++pixel) {
      picture.pixels.insert(picture.pixels.end(), colour.begin(), colour.end());
    }
    const auto decoded = decodeJpeg(encodeJpeg(picture, 0.7).value());
    ASSERT_TRUE(decoded);
    EXPECT_LE(largestDifference(picture, *decoded), 4) << int{colour[0]} << " " << int{colour[1]};
  }
}

TEST(JpegPicture, isAJfifFileAndTheSameEachTime) {
  const auto file = encodeJpeg(gradient(64, 64), 0.7);
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->starts_with("\xFF\xD8\xFF\xE0"));
  EXPECT_THAT(*file, HasSubstr("JFIF"));
  EXPECT_EQ(encodeJpeg(gradient(64, 64), 0.7), file);
}

TEST(JpegPicture, moreQualityTakesMoreBytes) {
  std::mt19937 random(20261121);
  auto picture = gradient(128, 128);
  for (auto& value : picture.pixels) {
    value = static_cast<std::uint8_t>(random());
  }
  std::size_t last = 0;
  for (const double quality : {0.0, 0.2, 0.4, 0.7, 1.0}) {
    const auto file = encodeJpeg(picture, quality);
    ASSERT_TRUE(file);
    EXPECT_GT(file->size(), last) << quality;
    last = file->size();
  }
}

TEST(JpegPicture, aBombIsRefusedByItsHeader) {
  const auto file = encodeJpeg(gradient(64, 64), 0.7).value();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(decodeJpeg(resized(file, 60'000, 60'000)), std::nullopt);
  EXPECT_EQ(decodeJpeg(resized(file, 65'500, 1000)), std::nullopt);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(JpegPicture, aCutFileIsRefusedWhereverItIsCut) {
  const auto file = encodeJpeg(gradient(64, 64), 0.7).value();
  for (std::size_t size = 0; size < file.size(); ++size) {
    EXPECT_EQ(decodeJpeg(file.substr(0, size)), std::nullopt) << size;
  }
}

TEST(JpegPicture, aFileThatLacksItsMiddleIsRefused) {
  auto file = encodeJpeg(gradient(256, 256), 0.7).value();
  file.erase(file.size() / 2, file.size() / 2 - 2);
  EXPECT_EQ(decodeJpeg(file), std::nullopt);
}

TEST(JpegPicture, whatIsNoJpegIsRefused) {
  EXPECT_EQ(decodeJpeg(""), std::nullopt);
  EXPECT_EQ(decodeJpeg("text"), std::nullopt);
  EXPECT_EQ(decodeJpeg("\xFF\xD8\xFF\xD9"), std::nullopt);
  EXPECT_EQ(decodeJpeg("\x89PNG\r\n"), std::nullopt);
}

TEST(JpegPicture, damageNeverDoesWorseThanToGiveNothing) {
  const auto file = encodeJpeg(gradient(96, 64), 0.7).value();
  std::mt19937 random(20261121);
  int refused = 0;
  for (int round = 0; round < 300; ++round) {
    auto damaged = file;
    for (int change = 0; change < 3; ++change) {
      damaged.at(random() % damaged.size()) = static_cast<char>(random());
    }
    const auto decoded = decodeJpeg(damaged);
    if (decoded) {
      const auto pixels =
          static_cast<std::size_t>(decoded->width) * static_cast<std::size_t>(decoded->height);
      ASSERT_EQ(decoded->pixels.size(), 3 * pixels);
    } else {
      ++refused;
    }
  }
  EXPECT_GT(refused, 0);
}

}  // namespace
}  // namespace vesk::media
