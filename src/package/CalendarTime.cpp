#include "package/CalendarTime.h"

#include <fmt/format.h>

#include <ctime>

namespace vesk::package {

namespace {

/// Reads a text from left to right; every step says whether it found what it asked for.
class TextCursor {
 public:
  explicit TextCursor(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }

  bool take(char expected) {
    if (!rest_.starts_with(expected)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  /// Exactly `count` digits as a number.
  std::optional<int> number(std::size_t count) {
    if (rest_.size() < count) return std::nullopt;
    int value = 0;
    for (const char digit : rest_.substr(0, count)) {
      if (digit < '0' || digit > '9') return std::nullopt;
      value = value * 10 + (digit - '0');
    }
    rest_.remove_prefix(count);
    return value;
  }

 private:
  std::string_view rest_;
};

std::optional<std::chrono::sys_days> day(TextCursor& cursor) {
  const auto year = cursor.number(4);
  if (!year || !cursor.take('-')) return std::nullopt;
  const auto month = cursor.number(2);
  if (!month || !cursor.take('-')) return std::nullopt;
  const auto dayOfMonth = cursor.number(2);
  if (!dayOfMonth) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(*year),
                                         std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*dayOfMonth))};
  if (!date.ok()) return std::nullopt;
  return std::chrono::sys_days(date);
}

std::optional<std::chrono::seconds> timeOfDay(TextCursor& cursor) {
  const auto hours = cursor.number(2);
  if (!hours || *hours > 23 || !cursor.take(':')) return std::nullopt;
  const auto minutes = cursor.number(2);
  if (!minutes || *minutes > 59 || !cursor.take(':')) return std::nullopt;
  const auto seconds = cursor.number(2);
  if (!seconds || *seconds > 59) return std::nullopt;
  if (cursor.take('.')) {
    if (!cursor.number(1)) return std::nullopt;
    while (cursor.number(1)) {
    }
  }
  return std::chrono::hours(*hours) + std::chrono::minutes(*minutes) +
         std::chrono::seconds(*seconds);
}

/// How far local time of the zone is ahead of UTC.
std::optional<std::chrono::seconds> zoneOffset(TextCursor& cursor) {
  if (cursor.take('Z')) return std::chrono::seconds(0);
  const bool ahead = cursor.take('+');
  if (!ahead && !cursor.take('-')) return std::nullopt;
  const auto hours = cursor.number(2);
  if (!hours || *hours > 23) return std::nullopt;
  cursor.take(':');
  const auto minutes = cursor.number(2);
  if (!minutes || *minutes > 59) return std::nullopt;
  const auto offset = std::chrono::hours(*hours) + std::chrono::minutes(*minutes);
  return ahead ? offset : -offset;
}

}  // namespace

std::string iso8601(std::chrono::sys_seconds instant) {
  const auto midnight = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(midnight);
  const std::chrono::hh_mm_ss time(instant - midnight);
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     time.hours().count(), time.minutes().count(), time.seconds().count());
}

std::optional<std::chrono::sys_seconds> instantFromISO8601(std::string_view text) {
  TextCursor cursor(text);
  const auto date = day(cursor);
  if (!date || !cursor.take('T')) return std::nullopt;
  const auto time = timeOfDay(cursor);
  if (!time) return std::nullopt;
  const auto offset = zoneOffset(cursor);
  if (!offset || !cursor.atEnd()) return std::nullopt;
  return *date + *time - *offset;
}

std::string localStamp(std::chrono::sys_seconds instant) {
  const auto time = std::chrono::system_clock::to_time_t(instant);
  std::tm local{};
  ::localtime_r(&time, &local);
  return fmt::format("{:04}{:02}{:02}-{:02}{:02}{:02}", local.tm_year + 1900, local.tm_mon + 1,
                     local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
}

}  // namespace vesk::package
