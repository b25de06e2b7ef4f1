#include <gtest/gtest.h>

#include "package/CalendarTime.h"

namespace vesk::package {
namespace {

using std::chrono::sys_seconds;

TEST(CalendarTime, anInstantIsWrittenInUtcWithoutAFraction) {
  EXPECT_EQ(iso8601(sys_seconds(std::chrono::seconds(1795167667))), "2026-11-20T09:41:07Z");
  EXPECT_EQ(iso8601(sys_seconds{}), "1970-01-01T00:00:00Z");
  EXPECT_EQ(iso8601(sys_seconds(std::chrono::seconds(-1))), "1969-12-31T23:59:59Z");
}

TEST(CalendarTime, whatIsWrittenReadsBack) {
  for (const std::int64_t second : {0LL, -1LL, 951782400LL, 1795167667LL, 4102444799LL}) {
    const sys_seconds instant{std::chrono::seconds(second)};
    EXPECT_EQ(instantFromISO8601(iso8601(instant)), instant);
  }
}

TEST(CalendarTime, offsetsAndFractionsAreAccepted) {
  const auto instant = instantFromISO8601("2026-11-20T09:41:07Z");
  EXPECT_EQ(instantFromISO8601("2026-11-20T17:41:07+08:00"), instant);
  EXPECT_EQ(instantFromISO8601("2026-11-20T17:41:07+0800"), instant);
  EXPECT_EQ(instantFromISO8601("2026-11-20T04:11:07-05:30"), instant);
  EXPECT_EQ(instantFromISO8601("2026-11-20T09:41:07.999Z"), instant);
}

class NoInstant : public testing::TestWithParam<const char*> {};

TEST_P(NoInstant, isRefused) {
  EXPECT_EQ(instantFromISO8601(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(CalendarTime, NoInstant,
                         testing::Values("", "yesterday", "2026-11-20", "2026-11-20 09:41:07Z",
                                         "2026-11-20T09:41:07", "2026-11-20T09:41:07ZZ",
                                         "2026-02-30T09:41:07Z", "2026-13-01T09:41:07Z",
                                         "2026-11-20T24:00:00Z", "2026-11-20T09:60:07Z",
                                         "2026-11-20T09:41:60Z", "2026-11-20T09:41:07.Z",
                                         "2026-11-20T09:41:07+8", "26-11-20T09:41:07Z",
                                         "2026-11-20T09:41:07+24:00", "1795167667"));

}  // namespace
}  // namespace vesk::package
