#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "app/FileSizeText.h"

namespace vesk::app {
namespace {

TEST(FileSizeText, smallFilesAreCountedInBytes) {
  EXPECT_EQ(fileSizeText(0), "0 字节");
  EXPECT_EQ(fileSizeText(999), "999 字节");
}

TEST(FileSizeText, unitsArePowersOfAThousand) {
  EXPECT_EQ(fileSizeText(1'000), "1 KB");
  EXPECT_EQ(fileSizeText(1'000'000), "1.0 MB");
  EXPECT_EQ(fileSizeText(1'000'000'000), "1.00 GB");
  EXPECT_EQ(fileSizeText(1'000'000'000'000), "1.00 TB");
}

TEST(FileSizeText, largerUnitsHaveMoreDecimals) {
  EXPECT_EQ(fileSizeText(845'123), "845 KB");
  EXPECT_EQ(fileSizeText(12'345'678), "12.3 MB");
  EXPECT_EQ(fileSizeText(1'236'000'000), "1.24 GB");
}

TEST(FileSizeText, whatRoundsToAThousandTakesTheNextUnit) {
  EXPECT_EQ(fileSizeText(999'499), "999 KB");
  EXPECT_EQ(fileSizeText(999'500), "1.0 MB");
  EXPECT_EQ(fileSizeText(999'990'000), "1.00 GB");
}

TEST(FileSizeText, theLargestUnitTakesAnything) {
  EXPECT_EQ(fileSizeText(5'000'000'000'000'000), "5000.00 TB");
  EXPECT_EQ(fileSizeText(std::numeric_limits<std::uintmax_t>::max()), "18446744.07 TB");
}

}  // namespace
}  // namespace vesk::app
