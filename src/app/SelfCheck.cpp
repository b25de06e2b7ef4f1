#include "app/SelfCheck.h"

#include <fmt/format.h>

#include <utility>

#include "motion/ReportText.h"

namespace vesk::app {
namespace {

std::string_view mark(bool holds) {
  return holds ? "  ✓ " : "  ✗ ";
}

}  // namespace

SelfCheck::SelfCheck(std::string_view title)
    : text_(fmt::format("{0}\n{1}\n{0}\n", motion::ruler(), title)) {}

void SelfCheck::step(std::string_view name, const std::vector<std::string>& failures) {
  const bool holds = failures.empty();
  ++steps_;
  passed_ += holds ? 1 : 0;
  result(holds, name);
  for (const std::string& failure : failures) {
    line("      " + failure);
  }
  if (!holds) {
    collect(std::string(name));
  }
}

void SelfCheck::line(std::string_view text) {
  text_ += text;
  text_ += '\n';
}

void SelfCheck::result(bool holds, std::string_view text) {
  line(fmt::format("{}{}", mark(holds), text));
}

void SelfCheck::collect(std::string failure) {
  failed_.push_back(std::move(failure));
}

CheckOutcome SelfCheck::breakOff(std::string_view reason) {
  line(fmt::format("  ✗ {}", reason));
  return stop(1);
}

CheckOutcome SelfCheck::finish(std::string_view verdict) const {
  return {fmt::format("{}{}\n{}{}\n", text_, motion::ruler(), mark(failed_.empty()), verdict),
          failed_.empty() ? 0 : 1};
}

CheckOutcome SelfCheck::finishWithList(std::string_view verdictWhenAllHolds) const {
  if (failed_.empty()) {
    return finish(verdictWhenAllHolds);
  }
  std::string list = fmt::format("{} 项不符：", failed_.size());
  for (const std::string& name : failed_) {
    list += fmt::format("\n      · {}", name);
  }
  return finish(list);
}

}  // namespace vesk::app
