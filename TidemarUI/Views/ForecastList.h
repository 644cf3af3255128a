#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "TidemarCore/FileURL.h"
#include "TidemarUI/State/ForecastGroup.h"
#include "TidemarUI/State/SystemNames.h"
#include "TidemarUI/Views/KeyedColumn.h"

namespace tidemar {

class ForecastSectionView;

/// What goes when: a section for each way in which items go, a row for each moment. The texts begin
/// `style::rowOutset` inside of the widget.
class ForecastList : public QWidget {
 public:
  explicit ForecastList(const SystemNames& names = {});

  /// Asks the file manager to show all items of a row.
  std::function<void(const std::vector<FileURL>&)> onShowInFinder;

  const SystemNames& names() const noexcept { return _names; }

  /// Keeps the groups, which can be part of a larger state, as long as they are shown.
  void setGroups(const std::shared_ptr<const std::vector<ForecastGroup>>& groups);

 private:
  SystemNames _names;
  KeyedColumn<std::string, ForecastSectionView>* _sections;
};

}  // namespace tidemar
