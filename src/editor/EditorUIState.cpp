#include "editor/EditorUIState.h"

#include <algorithm>

namespace vesk::editor {
namespace {

constexpr std::array<std::string_view, EditorUIState::allCategories.size()> titles{
    "鼠标", "视角", "运镜", "声音", "画中画", "画框", "片段", "素材"};

}  // namespace

std::string_view EditorUIState::rawValue(Category category) {
  return titles.at(static_cast<std::size_t>(category));
}

std::optional<EditorUIState::Category> EditorUIState::category(std::string_view raw) {
  const auto* const found = std::ranges::find(allCategories, raw, &EditorUIState::rawValue);
  if (found == allCategories.end()) return std::nullopt;
  return *found;
}

void EditorUIState::setSelectedSegmentID(const QString& id) {
  if (id == selectedSegmentID_) return;
  selectedSegmentID_ = id;
  Q_EMIT selectedSegmentIDChanged();
}

void EditorUIState::setOpenCategory(std::optional<Category> category) {
  if (category == openCategory_) return;
  openCategory_ = category;
  Q_EMIT openCategoryChanged();
}

void EditorUIState::setPxPerSec(double value) {
  if (value == pxPerSec_) return;
  pxPerSec_ = value;
  Q_EMIT pxPerSecChanged();
}

void EditorUIState::setPip(const package::PiPSettings& pip) {
  if (pip == pip_) return;
  pip_ = pip;
  Q_EMIT pipChanged();
}

}  // namespace vesk::editor
