#include "TidemarUI/Views/AccessibleRoles.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QListView>
#include <map>

#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

constexpr const char* decorationMark = "tidemarIsDecoration";
constexpr const char* listMark = "tidemarIsList";

class Decoration : public QAccessibleWidget {
 public:
  explicit Decoration(QWidget* widget) : QAccessibleWidget(widget, QAccessible::Graphic) {}

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.invisible = true;
    return state;
  }
};

/// A row of a list of widgets. It is pressed where it is a button.
class RowOfWidgets : public QAccessibleWidget {
 public:
  explicit RowOfWidgets(QWidget* widget) : QAccessibleWidget(widget, QAccessible::ListItem) {}

  QStringList actionNames() const override {
    QStringList names = QAccessibleWidget::actionNames();
    if (button() != nullptr) names.prepend(pressAction());
    return names;
  }

  void doAction(const QString& name) override {
    if (name == pressAction() && button() != nullptr) {
      button()->click();
    } else {
      QAccessibleWidget::doAction(name);
    }
  }

 private:
  QAbstractButton* button() const { return qobject_cast<QAbstractButton*>(widget()); }
};

/// A row of a list view, known by its place. The toolkit's own says of each that it is an item to
/// be chosen, of a title too.
class RowOfView : public QAccessibleInterface, public QAccessibleActionInterface {
 public:
  RowOfView(QListView& view, int place) : _view(view), _place(place) {}

  bool isValid() const override { return index().isValid(); }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return _view.window()->windowHandle(); }
  QAccessibleInterface* parent() const override {
    return QAccessible::queryAccessibleInterface(&_view);
  }
  QAccessibleInterface* child(int) const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  void setText(QAccessible::Text, const QString&) override {}
  QRect rect() const override {
    const QRect row = _view.visualRect(index());
    return {_view.viewport()->mapToGlobal(row.topLeft()), row.size()};
  }
  QString text(QAccessible::Text kind) const override {
    const bool isName = kind == QAccessible::Name;
    if (!isName && kind != QAccessible::Description) return {};
    return index().data(isName ? Qt::AccessibleTextRole : Qt::AccessibleDescriptionRole).toString();
  }
  QAccessible::Role role() const override {
    return isTitle() ? QAccessible::StaticText : QAccessible::ListItem;
  }
  QAccessible::State state() const override {
    QAccessible::State state;
    state.invisible = !_view.isVisible();
    state.offscreen = !_view.viewport()->rect().intersects(_view.visualRect(index()));
    state.selectable = state.focusable = !isTitle();
    state.selected = _view.selectionModel()->isSelected(index());
    state.focused = _view.hasFocus() && _view.currentIndex() == index();
    return state;
  }

  void* interface_cast(QAccessible::InterfaceType type) override {
    const bool hasActions = type == QAccessible::ActionInterface && !isTitle();
    return hasActions ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
  }
  QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
  void doAction(const QString& name) override {
    if (name == setFocusAction()) _view.setFocus();
    _view.setCurrentIndex(index());
  }
  QStringList keyBindingsForAction(const QString&) const override { return {}; }

 private:
  QModelIndex index() const { return _view.model()->index(_place, 0); }
  bool isTitle() const { return !index().flags().testFlag(Qt::ItemIsSelectable); }

  QListView& _view;
  int _place;
};

class ListOfView : public QAccessibleWidget {
 public:
  explicit ListOfView(QListView& view) : QAccessibleWidget(&view, QAccessible::List), _view(view) {}
  ~ListOfView() override {
    for (const auto& [place, id] : _rows)
      QAccessible::deleteAccessibleInterface(id);
  }

  int childCount() const override { return _view.model()->rowCount(); }
  QAccessibleInterface* child(int place) const override {
    if (place < 0 || place >= childCount()) return nullptr;
    const auto [row, isNew] = _rows.try_emplace(place);
    if (isNew) row->second = QAccessible::registerAccessibleInterface(new RowOfView(_view, place));
    return QAccessible::accessibleInterface(row->second);
  }
  QAccessibleInterface* childAt(int x, int y) const override {
    return child(_view.indexAt(_view.viewport()->mapFromGlobal(QPoint(x, y))).row());
  }
  int indexOfChild(const QAccessibleInterface* row) const override {
    for (const auto& [place, id] : _rows) {
      if (QAccessible::accessibleInterface(id) == row) return place;
    }
    return -1;
  }
  QAccessibleInterface* focusChild() const override {
    return _view.hasFocus() ? child(_view.currentIndex().row()) : nullptr;
  }

 private:
  QListView& _view;
  mutable std::map<int, QAccessible::Id> _rows;  ///< Those that were asked for.
};

/// Asked for each class of an object in turn, its own first.
QAccessibleInterface* accessible(const QString& className, QObject* object) {
  if (!object->isWidgetType()) return nullptr;
  auto* widget = static_cast<QWidget*>(object);
  const auto isMarked = [](const QWidget* one, const char* mark) {
    return one != nullptr && one->property(mark).toBool();
  };
  if (isMarked(widget, decorationMark)) return new Decoration(widget);
  if (isMarked(widget->parentWidget(), listMark)) return new RowOfWidgets(widget);
  if (isMarked(widget, listMark)) {
    auto* view = qobject_cast<QListView*>(widget);
    return view == nullptr ? new QAccessibleWidget(widget, QAccessible::List)
                           : new ListOfView(*view);
  }
  const bool isPlainWindow = widget->isWindow() && className == QStringLiteral("QWidget");
  return isPlainWindow ? new QAccessibleWidget(widget, QAccessible::Window) : nullptr;
}

}  // namespace

void installAccessibleRoles() {
  QAccessible::installFactory(&accessible);
}

void markAsDecoration(QWidget& picture) {
  picture.setProperty(decorationMark, true);
}

void markAsList(QWidget& list, std::string_view name) {
  list.setProperty(listMark, true);
  list.setAccessibleName(textOf(name));
}

}  // namespace tidemar
