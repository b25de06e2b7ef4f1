#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <string>

namespace vesk::app::test {

/// How far a picture of the window is from another one of the same size.
struct ScreenDifference {
  double mean = 0;  ///< of all channels, absolute, of 255
  double far = 0;   ///< share of the pixels of which a channel is more than 32 off
};

ScreenDifference difference(const QImage& picture, const QImage& reference);

/// Compares a picture of the window with the one that is kept as tests/window/screens/<name>.png.
/// Drivers and fonts of other versions set single pixels differently, so that 2 of 255 on average
/// and 0.5 % of far-off pixels pass. A picture that does not pass is written to the folder
/// "window-screens" below the working directory. With VESK_WRITE_SCREENS set in the environment,
/// the picture is kept as the new reference instead; look at it before it is committed.
testing::AssertionResult matchesScreen(const QImage& picture, const std::string& name);

}  // namespace vesk::app::test
