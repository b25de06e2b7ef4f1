#include "editor/EditHistory.h"

#include <utility>

namespace vesk::editor {
namespace {

using Snapshot = std::function<package::EditDocument()>;

std::optional<package::EditDocument> step(std::vector<package::EditDocument>& from,
                                          std::vector<package::EditDocument>& to,
                                          const Snapshot& current) {
  if (from.empty()) return std::nullopt;
  package::EditDocument entry = std::move(from.back());
  from.pop_back();
  to.push_back(current());
  return entry;
}

}  // namespace

void EditHistory::push(double now, double coalesce, const Snapshot& snapshot) {
  // The window slides: one drag makes one step, however long it lasts. What follows an undo begins
  // anew: a redo must not find it in its way.
  const bool continues = lastSnapshotAt_ && now - *lastSnapshotAt_ < coalesce &&
                         !undoStack_.empty() && redoStack_.empty();
  lastSnapshotAt_ = now;
  if (continues) return;
  undoStack_.push_back(snapshot());
  if (undoStack_.size() > depth) undoStack_.erase(undoStack_.begin());
  redoStack_.clear();
}

std::optional<package::EditDocument> EditHistory::undo(const Snapshot& current) {
  return step(undoStack_, redoStack_, current);
}

std::optional<package::EditDocument> EditHistory::redo(const Snapshot& current) {
  return step(redoStack_, undoStack_, current);
}

void EditHistory::clear() {
  undoStack_.clear();
  redoStack_.clear();
}

}  // namespace vesk::editor
