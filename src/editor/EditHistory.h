#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "package/EditDocument.h"

namespace vesk::editor {

/// Whole documents to go back and forward to. Changes of one gesture become one step.
class EditHistory {
 public:
  static constexpr std::size_t depth = 30;

  /// Remembers the document before a change, unless the change comes within `coalesce` seconds of
  /// the one before and continues it. After an undo it does not, and forgets what was undone.
  /// @param now seconds on a clock that does not go back.
  /// @param snapshot called only when it is to be remembered.
  void push(double now, double coalesce, const std::function<package::EditDocument()>& snapshot);

  bool canUndo() const { return !undoStack_.empty(); }
  bool canRedo() const { return !redoStack_.empty(); }

  /// One step back or forward: gives the document to go to and keeps `current` for the way back.
  /// Nothing when there is no step.
  std::optional<package::EditDocument> undo(const std::function<package::EditDocument()>& current);
  std::optional<package::EditDocument> redo(const std::function<package::EditDocument()>& current);

  /// Forgets all steps, and not when the last change was.
  void clear();

 private:
  std::vector<package::EditDocument> undoStack_;  ///< newest last
  std::vector<package::EditDocument> redoStack_;
  std::optional<double> lastSnapshotAt_;
};

}  // namespace vesk::editor
