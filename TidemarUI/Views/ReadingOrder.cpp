#include "TidemarUI/Views/ReadingOrder.h"

#include <QLayout>
#include <QScrollArea>
#include <vector>

namespace tidemar {
namespace {

void collect(QWidget& widget, std::vector<QWidget*>& order);

void collect(QLayout& layout, std::vector<QWidget*>& order) {
  for (int index = 0; index < layout.count(); ++index) {
    QLayoutItem* item = layout.itemAt(index);
    if (QWidget* widget = item->widget()) {
      collect(*widget, order);
    } else if (QLayout* inner = item->layout()) {
      collect(*inner, order);
    }
  }
}

void collect(QWidget& widget, std::vector<QWidget*>& order) {
  if (widget.focusPolicy() & Qt::TabFocus) order.push_back(&widget);
  if (auto* area = qobject_cast<QScrollArea*>(&widget);
      area != nullptr && area->widget() != nullptr)
    collect(*area->widget(), order);
  if (widget.layout() != nullptr) collect(*widget.layout(), order);
}

}  // namespace

void restoreReadingOrder(QWidget& screen) {
  std::vector<QWidget*> order;
  collect(screen, order);
  for (std::size_t index = 1; index < order.size(); ++index)
    QWidget::setTabOrder(order[index - 1], order[index]);
}

}  // namespace tidemar
