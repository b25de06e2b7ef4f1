#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vesk::app {

/// What a finished self-check prints, and the exit code of the process.
struct CheckOutcome {
  std::string text;
  int exitCode = 0;
};

/// Collects the steps of a self-check in the form that all of them share: a title between rulers,
/// the steps, a ruler, the verdict.
class SelfCheck {
 public:
  explicit SelfCheck(std::string_view title);

  /// Adds a step: it passes when it has no failures, which are listed below it otherwise.
  void step(std::string_view name, const std::vector<std::string>& failures);

  /// Adds a line of its own below the steps so far.
  void line(std::string_view text);

  /// Adds a line with its mark; what failed is told by collect().
  void result(bool holds, std::string_view text);

  /// Adds a failure to the list at the end.
  void collect(std::string failure);

  int steps() const { return steps_; }
  int passed() const { return passed_; }

  /// Ends the check with this text behind the mark.
  CheckOutcome finish(std::string_view verdict) const;

  /// Ends the check with this text when all holds, else with a list of the steps that failed and
  /// of the failures that were collected.
  CheckOutcome finishWithList(std::string_view verdictWhenAllHolds) const;

  /// Ends the check without a verdict, after its lines.
  CheckOutcome stop(int exitCode) const { return {text_, exitCode}; }

  /// Ends the check before its verdict, because it cannot go on.
  CheckOutcome breakOff(std::string_view reason);

 private:
  std::string text_;
  int steps_ = 0;
  int passed_ = 0;
  std::vector<std::string> failed_;
};

}  // namespace vesk::app
