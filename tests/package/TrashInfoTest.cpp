#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "package/TrashInfo.h"

namespace vesk::package {
namespace {

using namespace std::string_literals;

/// A time zone for the life of the object.
class TimeZone {
 public:
  explicit TimeZone(const char* name) {
    if (const char* old = std::getenv("TZ")) saved_ = old;
    ::setenv("TZ", name, 1);
    ::tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
  ~TimeZone() {
    saved_.empty() ? ::unsetenv("TZ") : ::setenv("TZ", saved_.c_str(), 1);
    ::tzset();
  }

 private:
  std::string saved_;
};

TEST(TrashInfo, aPathIsPercentEncodedByteByByte) {
  EXPECT_EQ(percentEncoded("/home/a-b_c.d!~*'()/20261120-174107.recording"),
            "/home/a-b_c.d!~*'()/20261120-174107.recording");
  EXPECT_EQ(percentEncoded("/a b%c\nd"), "/a%20b%25c%0Ad");
  EXPECT_EQ(percentEncoded("录"), "%E5%BD%95");
  EXPECT_EQ(percentEncoded("\xFF;?:@&=+$,#"), "%FF%3B%3F%3A%40%26%3D%2B%24%2C%23");
}

TEST(TrashInfo, saysWhereAndWhenInLocalTime) {
  const TimeZone zone("UTC-8");
  EXPECT_EQ(trashInfo("/videos/my take.recording", Timestamp(std::chrono::seconds(1795167667))),
            "[Trash Info]\nPath=/videos/my%20take.recording\nDeletionDate=2026-11-20T17:41:07\n");
}

TEST(TrashInfo, aDirectorySizeIsAddedOrReplaced) {
  const auto one = withDirectorySize("", "a b", 4096, 1000);
  EXPECT_EQ(one, "4096 1000 a%20b\n");
  const auto two = withDirectorySize(one, "c", 8192, 1001);
  EXPECT_EQ(two, "4096 1000 a%20b\n8192 1001 c\n");
  EXPECT_EQ(withDirectorySize(two, "a b", 12288, 1002), "8192 1001 c\n12288 1002 a%20b\n");
  EXPECT_EQ(withDirectorySize("1 2 c\n\n3 4 dc", "c", 5, 6), "3 4 dc\n5 6 c\n");
}

}  // namespace
}  // namespace vesk::package
