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
  return package::makeSyntheticPackage(marks, takeLength, now);
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

/// Changes a value that views keep a copy of, and undoes that.
Failures tryUndoOfView(PreviewController& session, const EditedValues& values) {
  const int version = session.documentVersion();
  const auto setSize = [&](double size) {
    session.changeLook([&](CompositeSettings& look) { look.pip.size = size; });
  };
  setSize(values.cameraSize);
  session.pushUndo(PreviewController::discreteEdit);
  setSize(0.19);
  session.undo();
  return viewUndoFailures(session, version, values);
}

Failures tryFollowSpeed(PreviewController& session, const EditedTake& edited,
                        const EditedValues& values) {
  const std::size_t before = count(session);
  session.setFollowSpeedRaw(values.followSpeed);
  session.rebuildTrack();
  return followSpeedFailures(session, before, edited, values);
}

Failures tryUndoOfRegeneration(PreviewController& session, const EditedTake& edited,
                               const EditedValues& values) {
  session.pushUndo(PreviewController::discreteEdit);
  session.setSensitivityRaw(motion::Sensitivity::dense);
  session.regenerate();
  session.scheduleSave();
  session.undo();
  return regenerationUndoFailures(session, edited, values);
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

Failures viewUndoFailures(const PreviewController& undone, int versionBefore,
                          const EditedValues& values) {
  Failures failures;
  if (undone.documentVersion() == versionBefore) {
    failures.emplace_back(
        "撤销后 documentVersion 没变，视图里的 @State 不会回读，画中画热区会停在旧位置，"
        "下次交互还会把陈旧值写回");
  }
  if (const double size = undone.look().pip.size; !isNear(size, values.cameraSize)) {
    failures.push_back(
        fmt::format("撤销后画中画大小 期望 {:.3f}，实际 {:.3f}", values.cameraSize, size));
  }
  return failures;
}

Failures followSpeedFailures(const PreviewController& changed, std::size_t before,
                             const EditedTake& edited, const EditedValues& values) {
  Failures failures;
  if (count(changed) != before) {
    failures.push_back(
        fmt::format("改跟随速度把段数从 {} 变成了 {}——它不该触发重新推断", before, count(changed)));
  }
  const motion::ZoomSegment* const segment = changed.segment(edited.editedID);
  if (segment == nullptr) {
    failures.emplace_back("改跟随速度之后，改过的段没了");
  } else if (std::abs(segment->followSpeed - values.followSpeed) > 1e-9) {
    failures.emplace_back("改跟随速度没有写进段里");
  }
  return failures;
}

Failures regenerationUndoFailures(const PreviewController& undone, const EditedTake& edited,
                                  const EditedValues& values) {
  const motion::ZoomSegment* const segment = undone.segment(edited.editedID);
  if (segment == nullptr) return {"改灵敏度丢掉了手工编辑，且撤销也拿不回来"};
  if (isNear(segment->level, values.level)) return {};
  return {fmt::format("撤销后强度没回来：{:.3f}", segment->level)};
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
  // One after the other: each starts from what the one before left.
  const auto collect = [&](Failures failures) {
    for (std::string& failure : failures) check.collect(std::move(failure));
  };
  collect(reopeningFailures(*second, edited, values));
  collect(tryUndoOfView(*second, values));
  collect(tryFollowSpeed(*second, edited, values));
  collect(tryUndoOfRegeneration(*second, edited, values));
  return check.finishWithList("段编辑活过了一次重开\n");
}

}  // namespace vesk::app
