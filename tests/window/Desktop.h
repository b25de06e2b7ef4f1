#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <optional>

#include "capture/x11/TestDisplay.h"
#include "package/TemporaryDirectory.h"

namespace vesk::app::test {

/// What the windows of this process's tests stand on: a display server of their own with a window
/// manager, the one application object, and scratch folders where the user's would be.
class Desktop : public testing::Environment {
 public:
  /// The one that is set up.
  static Desktop& current();

  void SetUp() override;
  void TearDown() override;

  const capture::x11::test::TestDisplay& display() const { return *display_; }

 private:
  void setEnvironment() const;

  package::TemporaryDirectory folder_;
  std::optional<capture::x11::test::TestDisplay> display_;
  std::optional<QGuiApplication> application_;
};

}  // namespace vesk::app::test
