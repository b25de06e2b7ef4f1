#pragma once

#include "package/StyleSettings.h"

namespace vesk::editor {

/// On the stage, in points from its top left corner.
struct StagePoint {
  double x = 0;
  double y = 0;
  bool operator==(const StagePoint&) const = default;
};

struct StageSize {
  double width = 0;
  double height = 0;
  bool operator==(const StageSize&) const = default;
};

struct StageRect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  bool operator==(const StageRect&) const = default;
};

/// How the camera's window is taken hold of on the stage that shows the preview. A stage without
/// a surface, or a pointer that is nowhere, moves nothing.
class PipGesture {
 public:
  static constexpr double smallest = 0.1;  ///< height of the window as a share of the stage's
  static constexpr double largest = 0.45;

  PipGesture(const package::PiPSettings& pip, StageSize stage) : pip_{pip}, stage_{stage} {}

  /// Where the window can be grasped. A rounded one counts as 16 to 9, whatever the camera's form.
  StageRect rect() const;
  /// The middle of the handle for resizing, on the window's edge to the bottom right.
  StagePoint handle() const;

  /// The window with its middle at the pointer, as far as it stays on the stage. Along an axis in
  /// which it is longer than the stage it stands in the middle.
  package::PiPSettings moved(StagePoint pointer) const;
  /// The window resized about its middle, so that the handle's distance from there becomes the
  /// pointer's.
  package::PiPSettings resized(StagePoint pointer) const;

 private:
  double aspect() const;
  double halfWidth() const;   ///< share of the stage's width
  double halfHeight() const;  ///< share of the stage's height
  bool reaches(StagePoint pointer) const;

  package::PiPSettings pip_;
  StageSize stage_;
};

}  // namespace vesk::editor
