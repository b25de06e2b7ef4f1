#include <epoxy/gl.h>
#include <gtest/gtest.h>

#include <memory>

#include "window/GraphicsWatch.h"
#include "window/Until.h"

namespace vesk::app::test {
namespace {

TEST(GraphicsWatch, tellsOfAFault) {
  auto window = std::make_unique<QQuickWindow>();
  const GraphicsWatch watch(*window);
  bool isFaulty = false;
  QObject::connect(
      window.get(), &QQuickWindow::beforeRendering, window.get(),
      [&isFaulty] {
        if (isFaulty) glEnable(0xDEAD);
      },
      Qt::DirectConnection);
  window->resize(100, 100);
  window->show();
  ASSERT_TRUE(until([&] { return watch.hasListened(); }));
  EXPECT_TRUE(watch.messages().empty());
  isFaulty = true;
  ASSERT_TRUE(until([&] {
    window->update();
    return !watch.messages().empty();
  }));
  window.reset();
  EXPECT_NE(watch.messages().front().find("GL_INVALID_ENUM"), std::string::npos);
}

}  // namespace
}  // namespace vesk::app::test
