#pragma once

#include <fmt/format.h>

#include <QAbstractItemModelTester>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "editor/EditorView.h"
#include "editor/SessionStage.h"
#include "editor/TimelineView.h"

namespace vesk::editor::test {

/// A recording of 20 s with clicks at 5, 11 and 16 (a double click), a manual mark at 18, and the
/// segments a (4 s to 8 s) and b (12 s to 14 s), at 20 points a second in a window of 300.
class TimelineStage : public SessionStage {
 protected:
  TimelineStage() : session_(makeSession()), editor_(*session_, ui_), view_(*session_, ui_) {
    ui_.setPxPerSec(20);
    view_.viewport()->setWidth(300);
    auto twice = clickAt(16);
    twice.clickCount = 2;
    open(20, {clickAt(5), clickAt(11), twice, markAt(18, package::RecordedEvent::Kind::zoomIn)},
         R"({"id":"a","start":4,"end":8},{"id":"b","start":12,"end":14,"level":2.5})");
  }

  void open(double duration, const std::vector<package::RecordedEvent>& events,
            const std::string& segments) {
    // Under a name of its own: the one that is left is saved.
    const auto take = putTake(fmt::format("录制 {}", ++takes_), events, duration);
    std::ofstream(take / "edit.json") << R"({"segments":[)" << segments << "]}";
    session_->open(take);
  }

  const motion::ZoomSegment& segment(const std::string& id) const { return *session_->segment(id); }

  std::unique_ptr<PreviewController> session_;
  EditorUIState ui_;
  EditorView editor_;
  TimelineView view_;

 private:
  using Tester = QAbstractItemModelTester;

  int takes_ = 0;
  Tester ticks_{view_.ticks(), Tester::FailureReportingMode::Fatal};
  Tester markers_{view_.markers(), Tester::FailureReportingMode::Fatal};
  Tester segments_{view_.segments(), Tester::FailureReportingMode::Fatal};
};

}  // namespace vesk::editor::test
