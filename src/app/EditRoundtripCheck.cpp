#include "app/EditRoundtripCheck.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "package/SyntheticPackage.h"

namespace vesk::app {
namespace {

namespace fs = std::filesystem;
using compositor::CompositeSettings;
using editor::PreviewController;
using Failures = std::vector<std::string>;

constexpr double takeLength = 12;
constexpr double tolerance = 0.001;

bool isNear(double value, double expected) {
  return std::abs(value - expected) <= tolerance;
}

std::optional<fs::path> markedTake(package::Timestamp now) {
  using Kind = package::RecordedEvent::Kind;
  constexpr std::array marks{
      package::SyntheticMark{.t = 2.0, .kind = Kind::zoomIn, .x = 0.3, .y = 0.3},
      package::SyntheticMark{.t = 5.0, .kind = Kind::zoomOut, .x = 0.3, .y = 0.3},
      package::SyntheticMark{.t = 7.0, .kind = Kind::zoomIn, .x = 0.7, .y = 0.6},
      package::SyntheticMark{.t = 10.0, .kind = Kind::zoomOut, .x = 0.7, .y = 0.6}};
  auto url = package::makeSyntheticPackage(marks, takeLength, now);
  std::error_code error;
  // The run before may have left its document.
  if (url) fs::remove(*url / "edit.json", error);
  return url;
}

std::size_t count(const PreviewController& session) {
  return session.timeline().segments.size();
}

/// Edits the first segment, deletes the second and turns both volumes.
EditedTake edit(PreviewController& session, const EditedValues& values) {
  EditedTake edited{.inferred = count(session),
                    .editedID = session.timeline().segments[0].id,
                    .deletedID = session.timeline().segments[1].id};
  session.changeSegment(edited.editedID, [&](motion::ZoomSegment& segment) {
    segment.level = values.level;
    segment.focus = values.focus;
  });
  session.deleteSegment(edited.deletedID);
  const auto turn = [&](double CompositeSettings::* volume, double value) {
    session.changeLook([&](CompositeSettings& look) { look.*volume = value; });
    session.applyVolumes();
    session.scheduleSave();
  };
  turn(&CompositeSettings::systemVolume, values.systemVolume);
  turn(&CompositeSettings::micVolume, values.micVolume);
  edited.kept = count(session);
  return edited;
}

/// A value that views keep a copy of comes back by undo, and they are told.
void checkUndoOfView(PreviewController& session, Failures& failures) {
  constexpr double before = 0.41;
  const int version = session.documentVersion();
  const auto setSize = [&](double size) {
    session.changeLook([&](CompositeSettings& look) { look.pip.size = size; });
  };
  setSize(before);
  session.pushUndo(PreviewController::discreteEdit);
  setSize(0.19);
  session.undo();
  if (session.documentVersion() == version) {
    failures.emplace_back(
        "撤销后 documentVersion 没变，视图里的 @State 不会回读，画中画热区会停在旧位置，"
        "下次交互还会把陈旧值写回");
  }
  if (const double size = session.look().pip.size; !isNear(size, before)) {
    failures.push_back(fmt::format("撤销后画中画大小 期望 0.410，实际 {:.3f}", size));
  }
}

void checkFollowSpeed(PreviewController& session, const EditedTake& edited, Failures& failures) {
  constexpr double speed = 0.55;
  const std::size_t before = count(session);
  session.setFollowSpeedRaw(speed);
  session.rebuildTrack();
  if (count(session) != before) {
    failures.push_back(
        fmt::format("改跟随速度把段数从 {} 变成了 {}——它不该触发重新推断", before, count(session)));
  }
  const motion::ZoomSegment* const segment = session.segment(edited.editedID);
  if (segment == nullptr) {
    failures.emplace_back("改跟随速度之后，改过的段没了");
  } else if (std::abs(segment->followSpeed - speed) > 1e-9) {
    failures.emplace_back("改跟随速度没有写进段里");
  }
}

void checkUndoOfRegeneration(PreviewController& session, const EditedTake& edited,
                             const EditedValues& values, Failures& failures) {
  session.pushUndo(PreviewController::discreteEdit);
  session.setSensitivityRaw(motion::Sensitivity::dense);
  session.regenerate();
  session.scheduleSave();
  session.undo();
  const motion::ZoomSegment* const segment = session.segment(edited.editedID);
  if (segment == nullptr) {
    failures.emplace_back("改灵敏度丢掉了手工编辑，且撤销也拿不回来");
  } else if (!isNear(segment->level, values.level)) {
    failures.push_back(fmt::format("撤销后强度没回来：{:.3f}", segment->level));
  }
}

}  // namespace

Failures reopeningFailures(const PreviewController& reopened, const EditedTake& edited,
                           const EditedValues& values) {
  Failures failures;
  if (count(reopened) != edited.kept) {
    failures.push_back(fmt::format(
        "段数 期望 {}，实际 {}{}", edited.kept, count(reopened),
        count(reopened) == edited.inferred ? "（等于算法推断值——段被 regenerate 覆盖了）" : ""));
  }
  if (reopened.segment(edited.deletedID) != nullptr) {
    failures.push_back(fmt::format("删掉的段又回来了（id={}）", edited.deletedID));
  }
  if (const motion::ZoomSegment* const segment = reopened.segment(edited.editedID)) {
    if (!isNear(segment->level, values.level)) {
      failures.push_back(
          fmt::format("强度 期望 {:.3f}，实际 {:.3f}", values.level, segment->level));
    }
    if (!isNear(segment->focus.x, values.focus.x) || !isNear(segment->focus.y, values.focus.y)) {
      failures.push_back(fmt::format("焦点 期望 ({:.3f},{:.3f})，实际 ({:.3f},{:.3f})",
                                     values.focus.x, values.focus.y, segment->focus.x,
                                     segment->focus.y));
    }
  } else {
    failures.push_back(fmt::format("改过的段找不到了（id={}）", edited.editedID));
  }
  if (!reopened.hasManualEdits()) {
    failures.emplace_back("重开后 hasManualEdits 为 false，时间轴不会显示「已手动编辑」");
  }
  const auto compareVolume = [&](std::string_view name, double expected, double actual) {
    if (isNear(actual, expected)) return;
    failures.push_back(fmt::format("{}音量 期望 {:.3f}，实际 {:.3f}", name, expected, actual));
  };
  compareVolume("系统", values.systemVolume, reopened.look().systemVolume);
  compareVolume("人声", values.micVolume, reopened.look().micVolume);
  return failures;
}

CheckOutcome checkEditRoundtrip(package::Timestamp now, const MakeSession& makeSession) {
  SelfCheck check(" 编辑意图往返自检（走真实 open 路径）");
  const auto take = markedTake(now);
  if (!take) return check.breakOff("无法创建合成包");
  const auto first = makeSession();
  first->open(*take);
  if (!first->hasProject()) {
    return check.breakOff(fmt::format("第一次打开失败：{}", first->loadError().toStdString()));
  }
  check.line(fmt::format("  首次打开        {} 段（算法推断）", count(*first)));
  if (count(*first) < 2) return check.breakOff("合成包没产出至少 2 段，用例失效");

  const EditedValues values;
  const EditedTake edited = edit(*first, values);
  check.line(
      fmt::format("  编辑后          {} 段（改了 1 段的强度/焦点，删了 1 段）", edited.kept));
  first->flushSave();
  std::error_code error;
  if (!fs::exists(*take / "edit.json", error)) {
    return check.breakOff("edit.json 没落盘");
  }

  const auto second = makeSession();
  second->open(*take);
  if (!second->hasProject()) {
    return check.breakOff(fmt::format("第二次打开失败：{}", second->loadError().toStdString()));
  }
  check.line(fmt::format("  重开后          {} 段", count(*second)));
  Failures failures = reopeningFailures(*second, edited, values);
  checkUndoOfView(*second, failures);
  checkFollowSpeed(*second, edited, failures);
  checkUndoOfRegeneration(*second, edited, values, failures);
  for (std::string& failure : failures) check.collect(std::move(failure));
  return check.finishWithList("段编辑活过了一次重开\n");
}

}  // namespace vesk::app
