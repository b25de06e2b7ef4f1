#include <cstddef>
#include <string_view>

#include "motion/FrameWalk.h"
#include "motion/ReportSections.h"
#include "motion/ReportText.h"

namespace vesk::motion {
namespace {

std::string_view word(const Criterion& criterion, std::string_view pass, std::string_view fail) {
  return criterion.pass ? pass : fail;
}

std::string reversalWord(const Criterion& criterion, std::string_view pass, std::string_view fail,
                         double largest) {
  return criterion.pass ? std::string(pass)
                        : fmt::format("{}，最大 {:.4f} @ {:.2f}s", fail, largest, criterion.when());
}

std::string easeLines(const MotionCriteria& measured) {
  const Criterion& speed = measured.criterion(2);
  const Criterion& reversals = measured.criterion(3);
  const Criterion& progress = measured.criterion(4);
  const Criterion& drift = measured.criterion(5);
  std::string text;
  append(text, "  最大镜头速度 {:.4f} 画面/帧（{:.1f} 画面/秒）@ {:.2f}s  {}\n", speed.value,
         speed.value / frameStep, speed.when(), word(speed, "✓ 正常", "← 偏快"));
  append(text, "  推镜期视口边缘折返 {:.0f} 次  {}\n", reversals.value,
         reversalWord(reversals, "✓ 单调内收", "← 存在位移错位", measured.largestEaseInReversal));
  append(text, "  推镜/变焦进度最大偏差 {:.3f} @ {:.2f}s  {}\n", progress.value, progress.when(),
         word(progress, "✓ 同步，共用同一条曲线", "← 不同步，位移与缩放走了不同曲线"));
  append(text, "  到位后 0.35s 内额外位移 {:.4f} @ {:.2f}s  {}\n", drift.value, drift.when(),
         word(drift, "✓ 到位即停，指哪打哪", "← 接管时镜头被拽走，会看到抖动"));
  return text;
}

std::string resetLines(const MotionCriteria& measured) {
  const Criterion& home = measured.criterion(6);
  const Criterion& reversals = measured.criterion(7);
  std::string text;
  append(text, "  手动还原标记 {} 个，结束时未回整屏 {} 个  {}\n", measured.explicitResets,
         measured.incompleteResets,
         home.pass ? "✓ 按还原键即回到整屏"
                   : fmt::format("← 最差仍在 {:.2f}× @ {:.2f}s", home.value, home.when()));
  append(text, "  拉回期视口边缘折返 {:.0f} 次  {}\n", reversals.value,
         reversalWord(reversals, "✓ 单调外扩，还原干脆", "← 还原前先晃了一下",
                      measured.largestEaseOutReversal));
  return text;
}

std::string cursorLines(const MotionCriteria& measured) {
  const Criterion& lost = measured.criterion(8);
  const Criterion& offCentre = measured.criterion(9);
  std::string text;
  append(text, "  跟踪期指针跑出视口 {:.0f} 帧（接管滑行期另计 {} 帧）  {}\n", lost.value,
         measured.takeoverFrames, word(lost, "✓ 稳定后始终可见", "← 跟丢了"));
  append(text, "  指针离视口中心最大偏离 {:.3f} @ {:.2f}s（0.5=贴边）  {}\n", offCentre.value,
         offCentre.when(), word(offCentre, "✓ 保持在视口内", "← 几乎贴边"));
  append(text, "  处于移动区的帧占比 {:.0f}%（越低说明镜头越少动）\n", measured.movingShare * 100);
  return text;
}

std::string easeDetail(const DumpCtx& context, const EaseDetail& detail) {
  std::string text;
  append(text, "\n▸ 推镜期明细（段 {:.2f}→{:.2f}）\n", detail.span.first, detail.span.last);
  text += "      时刻    zoom    origin(x,y)      size    进度size 进度origin  偏差\n";
  for (std::size_t i = 0; i < detail.frames.size(); ++i) {
    const EaseFrame& frame = detail.frames[i];
    append(text, "  {:8.3f}s  {:.3f}  ({:.3f},{:.3f})  {:.4f}   {:.3f}    {:.3f}    {:.3f}{}\n",
           frame.t, context.track.sample(frame.t).framing, frame.box.low.x, frame.box.low.y,
           frame.box.size().x, frame.sizeProgress, frame.originProgress, frame.deviation(),
           i == detail.worst ? "  ←" : "");
  }
  return text;
}

std::string jumpDetail(const DumpCtx& context, double worst) {
  constexpr double around = 5 * frameStep;
  constexpr double abrupt = 0.02;
  std::string text =
      "    （已知可接受：光标本身的抖动会传导到镜头。压它要牺牲跟随性，见 §3.2.2）\n"
      "\n▸ 最差点附近逐帧分解\n"
      "      时刻     zoom      center            视口左上         Δ视口\n";
  walk(worst - around, worst + around + frameStep / 2, frameStep, [&](double t) {
    const CameraPose pose = context.track.sample(t);
    const VisibleRectangle box = visibleRectangle(context.track, t, context.camAspect);
    const double moved =
        travel(visibleRectangle(context.track, t - frameStep, context.camAspect), box);
    append(text, "  {:8.4f}s  {:.4f}  ({:.4f},{:.4f})  ({:.4f},{:.4f})  {:.4f}{}\n", t,
           pose.framing, pose.target.x, pose.target.y, box.low.x, box.low.y, moved,
           moved > abrupt ? "  ←" : "");
  });
  return text;
}

std::string jumpLines(const DumpCtx& context, const MotionCriteria& measured) {
  const Criterion& jump = measured.criterion(10);
  std::string text;
  append(text, "  最大速度突变 {:.4f} @ {:.2f}s  {}\n", jump.value, jump.when(),
         word(jump, "✓ 连续，无硬切", "← 存在硬切，检查关键帧生成"));
  return jump.pass ? text : text + jumpDetail(context, jump.when());
}

}  // namespace

std::string criteriaSection(const DumpCtx& context, const MotionCriteria& measured) {
  std::string text = easeLines(measured) + resetLines(measured) + cursorLines(measured);
  if (measured.worstEaseIn) {
    text += easeDetail(context, *measured.worstEaseIn);
  }
  return text + jumpLines(context, measured);
}

std::string verdictSection(const DumpCtx& context, const MotionCriteria& measured) {
  const std::vector<std::string> failed = failures(context, measured);
  if (failed.empty()) {
    return context.line + "\n  ✓ 十条运镜判据全部达标" +
           (context.gating ? "\n" : "（加 --gate 可让不达标时退出码变红）\n");
  }
  std::string text = context.line + "\n";
  append(text, "  ✗ {} 条运镜判据不达标：\n", failed.size());
  for (const std::string& failure : failed) {
    append(text, "      · {}\n", failure);
  }
  if (!context.gating) {
    text += "    （当前只是提示；加 --gate 会让退出码变 1）\n";
  }
  return text;
}

}  // namespace vesk::motion
