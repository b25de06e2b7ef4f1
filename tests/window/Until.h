#pragma once

#include <QTest>
#include <chrono>
#include <utility>

namespace vesk::app::test {

/// Lets events happen until it holds or the time is up; whether it holds.
template <typename Condition>
bool until(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds{20}) {
  return QTest::qWaitFor(std::move(condition), static_cast<int>(limit.count()));
}

}  // namespace vesk::app::test
