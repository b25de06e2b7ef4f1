#include "window/Screens.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

namespace vesk::app::test {
namespace {

constexpr double mostMean = 2;
constexpr double mostFar = 0.005;
constexpr int farOff = 32;

std::filesystem::path referencePath(const std::string& name) {
  return std::filesystem::path(VESK_SOURCE_DIR) / "tests/window/screens" / (name + ".png");
}

bool write(const QImage& picture, const std::filesystem::path& file) {
  std::filesystem::create_directories(file.parent_path());
  return picture.save(QString::fromStdString(file.string()), "PNG", 0);
}

}  // namespace

ScreenDifference difference(const QImage& picture, const QImage& reference) {
  const QImage a = picture.convertToFormat(QImage::Format_RGB888);
  const QImage b = reference.convertToFormat(QImage::Format_RGB888);
  long long sum = 0;
  long long far = 0;
  for (int y = 0; y < a.height(); ++y) {
    const uchar* const left = a.constScanLine(y);
    const uchar* const right = b.constScanLine(y);
    for (int x = 0; x < a.width(); ++x) {
      int most = 0;
      for (int channel = 3 * x; channel < 3 * x + 3; ++channel) {
        const int off = std::abs(left[channel] - right[channel]);
        sum += off;
        most = std::max(most, off);
      }
      if (most > farOff) ++far;
    }
  }
  const double pixels = static_cast<double>(a.width()) * a.height();
  return {.mean = static_cast<double>(sum) / (3 * pixels),
          .far = static_cast<double>(far) / pixels};
}

testing::AssertionResult matchesScreen(const QImage& picture, const std::string& name) {
  const std::filesystem::path kept = referencePath(name);
  if (std::getenv("VESK_WRITE_SCREENS") != nullptr) {
    if (!write(picture.convertToFormat(QImage::Format_RGB888), kept))
      return testing::AssertionFailure() << "cannot write " << kept;
    return testing::AssertionSuccess();
  }
  const QImage reference(QString::fromStdString(kept.string()));
  const std::filesystem::path taken =
      std::filesystem::current_path() / "window-screens" / (name + ".png");
  if (reference.size() != picture.size()) {
    write(picture, taken);
    return testing::AssertionFailure() << kept << " is missing or of another size; see " << taken;
  }
  const ScreenDifference off = difference(picture, reference);
  if (off.mean < mostMean && off.far <= mostFar) return testing::AssertionSuccess();
  write(picture, taken);
  return testing::AssertionFailure()
         << name << " is " << off.mean << " of 255 off on average, and far off at " << 100 * off.far
         << " % of its pixels; see " << taken;
}

}  // namespace vesk::app::test
