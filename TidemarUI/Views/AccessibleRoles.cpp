#include "TidemarUI/Views/AccessibleRoles.h"

#include <QAccessibleWidget>
#include <QWidget>

namespace tidemar {
namespace {

constexpr const char* decorationMark = "tidemarIsDecoration";

class Decoration : public QAccessibleWidget {
 public:
  explicit Decoration(QWidget* widget) : QAccessibleWidget(widget, QAccessible::Graphic) {}

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.invisible = true;
    return state;
  }
};

/// Asked for each class of an object in turn, its own first.
QAccessibleInterface* accessible(const QString& className, QObject* object) {
  if (!object->isWidgetType()) return nullptr;
  auto* widget = static_cast<QWidget*>(object);
  if (widget->property(decorationMark).toBool()) return new Decoration(widget);
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

}  // namespace tidemar
