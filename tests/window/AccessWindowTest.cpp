// The window for those who use the keyboard alone, or do not see it.
#include <QAccessible>
#include <QImage>
#include <functional>
#include <set>

#include "window/WindowStage.h"

namespace vesk::app::test {
namespace {

class AccessWindow : public WindowStage {
 protected:
  using Visit = std::function<void(QAccessibleInterface&)>;

  static void walk(QAccessibleInterface& node, const Visit& visit) {
    visit(node);
    for (int i = 0; i < node.childCount(); ++i) {
      if (QAccessibleInterface* const child = node.child(i)) walk(*child, visit);
    }
  }
  /// All that can be used by who does not see the window, by role.
  std::vector<QAccessibleInterface*> controls() {
    std::vector<QAccessibleInterface*> found;
    walk(*QAccessible::queryAccessibleInterface(&window()), [&](QAccessibleInterface& node) {
      const bool isControl =
          node.role() == QAccessible::Button || node.role() == QAccessible::PageTab ||
          node.role() == QAccessible::Slider || node.role() == QAccessible::MenuItem ||
          node.role() == QAccessible::ScrollBar || node.role() == QAccessible::List ||
          node.role() == QAccessible::ListItem || node.role() == QAccessible::Grip;
      if (isControl || node.state().focusable) found.push_back(&node);
    });
    return found;
  }
  std::set<QString> names() {
    std::set<QString> names;
    for (QAccessibleInterface* const control : controls()) {
      names.insert(control->text(QAccessible::Name));
    }
    return names;
  }
  void tabTo(const QString& name) {
    for (int step = 0; step < 40 && window().activeFocusItem() != &item(name); ++step) {
      hand().type(Key::tab);
    }
    ASSERT_EQ(window().activeFocusItem(), &item(name));
  }
  static QString nameOf(QQuickItem& item) {
    QAccessibleInterface* const node = QAccessible::queryAccessibleInterface(&item);
    return node == nullptr ? QString() : node->text(QAccessible::Name);
  }
  /// What surrounds an item, with room for a frame around it.
  QImage surroundings(const QImage& picture, const QQuickItem& item) {
    constexpr int room = 6;
    const QRectF place = item.mapRectToScene(item.boundingRect());
    return picture.copy(place.toAlignedRect().adjusted(-room, -room, room, room));
  }
};

TEST_F(AccessWindow, everyControlHasAName) {
  open(putTour());
  hand().click(place(QString::fromStdString("segment_" + segment(0).id)));
  const auto found = controls();
  EXPECT_GE(found.size(), 20U);
  for (QAccessibleInterface* const control : found) {
    // The window itself is the page's frame.
    if (control->role() == QAccessible::Window) continue;
    const QString name = control->object() == nullptr ? QString() : control->object()->objectName();
    EXPECT_FALSE(control->text(QAccessible::Name).isEmpty())
        << "role " << control->role() << ", " << name.toStdString();
  }
  const std::set<QString> all = names();
  for (const char* const expected :
       {"录制", "录制库", "编辑", "菜单", "撤销 ⌘Z", "重做 ⇧⌘Z", "播放 空格",
        "在播放头处新建效果段 M", "删除选中的效果段 ⌫", "停用", "删除", "放大时间轴", "缩小时间轴",
        "适合窗口", "标记点", "缩放", "起点", "终点"}) {
    EXPECT_TRUE(all.contains(QString::fromUtf8(expected))) << expected;
  }
}

TEST_F(AccessWindow, theEmptyPageHasNamesToo) {
  start({.mode = RootMode::edit});
  EXPECT_TRUE(names().contains(QStringLiteral("打开最近一次录制")));
  for (QAccessibleInterface* const control : controls()) {
    if (control->role() == QAccessible::Window) continue;
    EXPECT_FALSE(control->text(QAccessible::Name).isEmpty()) << control->role();
  }
}

TEST_F(AccessWindow, tabMovesAVisibleFocusThroughTheControls) {
  open(putTour());
  hand().click(place(QString::fromStdString("segment_" + segment(0).id)));
  hand().moveTo({2, window().height() - 2.0});
  std::set<const QQuickItem*> visited;
  std::set<QString> named;
  for (int step = 0; step < 60; ++step) {
    QQuickItem* const before = window().activeFocusItem();
    layOut();
    const QImage without = window().grabWindow();
    hand().type(Key::tab);
    ASSERT_TRUE(until([&] { return window().activeFocusItem() != before; }));
    QQuickItem& focused = *window().activeFocusItem();
    if (!visited.insert(&focused).second) break;
    const QString name = nameOf(focused);
    EXPECT_FALSE(name.isEmpty()) << focused.objectName().toStdString();
    named.insert(focused.objectName());
    EXPECT_TRUE(until([&] {
      return surroundings(window().grabWindow(), focused) != surroundings(without, focused);
    })) << "the focus is not seen on "
        << name.toStdString();
  }
  for (const char* const expected :
       {"tab_record", "tab_library", "tab_edit", "menuButton", "previousFrameButton", "playButton",
        "nextFrameButton", "toggleSelectedButton", "deleteSelectedButton", "addSegmentButton",
        "deleteSegmentButton", "zoomInButton", "zoomOutButton", "fitButton", "markerLane",
        "segmentLane"}) {
    EXPECT_TRUE(named.contains(QString(expected))) << expected;
  }
}

TEST_F(AccessWindow, theFocusedControlTakesTheSpaceBar) {
  open(putTour());
  tabTo("tab_library");
  hand().type(Key::space);
  EXPECT_TRUE(isShown("libraryPage"));
  EXPECT_FALSE(session().isPlaying());
}

TEST_F(AccessWindow, theMarkersAreReachedByKeys) {
  open(putTour());
  for (const Key enter : {Key::enter, Key::keypadEnter}) {
    session().seek(0);
    const auto before = segments();
    tabTo("markerLane");
    for (int step = 0; step < 5; ++step) hand().type(Key::left);
    hand().type(Key::right);
    ASSERT_EQ(timeline().currentMarker(), 1);
    hand().type(enter);
    const double time = session().currentTime();
    EXPECT_GT(time, 0);
    EXPECT_EQ(segments(), before) << "it is gone to, and no more";
    hand().type(enter, capture::controlModifier);
    EXPECT_NE(segments(), before);
    EXPECT_EQ(session().currentTime(), time);
    hand().type(Key::z, capture::controlModifier);
    ASSERT_EQ(segments(), before);
  }
}

TEST_F(AccessWindow, theSegmentsAndTheirMenuAreReachedByKeys) {
  open(putTour());
  tabTo("segmentLane");
  hand().type(Key::right);
  hand().type(Key::right);
  ASSERT_EQ(selected(), segment(1).id);
  for (const Key enter : {Key::enter, Key::keypadEnter}) {
    hand().type(enter);
    ASSERT_TRUE(until([&] { return isShown("toggleSegmentItem"); }));
    const bool wasEnabled = segment(1).enabled;
    hand().click(place("toggleSegmentItem"));
    EXPECT_NE(segment(1).enabled, wasEnabled);
    EXPECT_TRUE(segment(0).enabled);
    ASSERT_TRUE(until([&] { return !isShown("toggleSegmentItem"); }));
  }
}

}  // namespace
}  // namespace vesk::app::test
