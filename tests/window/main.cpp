#include <gtest/gtest.h>

#include "window/Desktop.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::AddGlobalTestEnvironment(new vesk::app::test::Desktop);  // NOLINT: taken over
  return RUN_ALL_TESTS();
}
