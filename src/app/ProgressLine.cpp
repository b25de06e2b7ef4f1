#include "app/ProgressLine.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace vesk::app {
namespace {

double secondsBetween(ProgressLine::Clock::time_point from, ProgressLine::Clock::time_point to) {
  return std::chrono::duration<double>(to - from).count();
}

std::string bar(double share) {
  constexpr int length = 30;
  const int filled = static_cast<int>(share * length);
  std::string text;
  for (int index = 0; index < length; ++index) text += index < filled ? "█" : "░";
  return text;
}

}  // namespace

ProgressLine::Form ProgressLine::suitableForm(std::FILE* out) {
  return isatty(fileno(out)) == 1 ? Form::rewritten : Form::plain;
}

ProgressLine::ProgressLine(std::FILE* out, Form form, double mediaSeconds, Clock::time_point start)
    : out_(out), form_(form), mediaSeconds_(mediaSeconds), start_(start) {}

void ProgressLine::show(double share, Clock::time_point now) {
  const double clamped = std::clamp(share, 0.0, 1.0);
  const int steps = form_ == Form::rewritten ? 100 : 10;
  // A share such as 0.1 must count as the tenth that it is meant to be.
  const int step = static_cast<int>(std::floor(clamped * steps + 1e-9));
  if (step <= lastShown_) return;
  lastShown_ = step;
  if (form_ == Form::rewritten) {
    rewrite(clamped, now);
  } else if (step > 0) {
    fmt::print(out_, "导出中 {}%\n", step * 10);
    std::fflush(out_);
  }
}

void ProgressLine::rewrite(double share, Clock::time_point now) {
  const double elapsed = std::max(secondsBetween(start_, now), 0.001);
  const double left = share > 0 ? elapsed / share - elapsed : 0;
  // Back to the first column, and whatever a longer line left behind is cleared.
  fmt::print(out_, "\r导出中 {} {:3.0f}%  {:.1f}× 实时  剩余 {:.0f} 秒\x1b[K", bar(share),
             std::floor(share * 100), share * mediaSeconds_ / elapsed, left);
  std::fflush(out_);
  lineIsOpen_ = true;
}

void ProgressLine::end() {
  if (lineIsOpen_) fmt::print(out_, "\n");
  lineIsOpen_ = false;
}

}  // namespace vesk::app
