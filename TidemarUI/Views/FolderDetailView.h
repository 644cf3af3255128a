#pragma once

#include <QPushButton>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Locale/Formats.h"
#include "TidemarCore/FileURL.h"
#include "TidemarUI/State/MainState.h"
#include "TidemarUI/Views/Card.h"
#include "TidemarUI/Views/ForecastList.h"
#include "TidemarUI/Views/ScrollColumn.h"
#include "TidemarUI/Views/Switch.h"

namespace tidemar {

class DisposalSection;
class IconView;
class RulesSection;

/// The screen of one folder: whether it is Temporary, what goes, the rules, what becomes of cleared
/// items. It shows what the folder says and never what was clicked; an edit shows once it comes
/// back as the folder's.
class FolderDetailView : public QWidget {
 public:
  FolderDetailView(const Formats& formats, const std::string& binName,
                   const SystemNames& names = {});

  // All of them tell the folder by its row id, since an edit can end just as another one is shown.
  std::function<void(std::int64_t id, bool isTemporary)> onSetTemporary;
  /// `shown` is what the user saw when he made the edit, `wanted` the same with what he changed.
  std::function<void(std::int64_t id, const TemporarySettings& shown,
                     const TemporarySettings& wanted)>
      onChangeSettings;
  std::function<void(const std::vector<FileURL>&)> onShowInFinder;

  /// Keeps the folder, which can be part of a larger state, until it is given another one. Another
  /// folder than the one before begins at the top, without an edit or a question of that one's.
  /// Null for no folder, while the page isn't shown.
  void setFolder(const std::shared_ptr<const MainFolder>& folder);

  /// Hands out what is being edited.
  void finishEdits();

 private:
  QLayout* makeHeader(const SystemNames& names);
  FormSection* makeTemporarySection();
  FormSection* makePreviewSection(const SystemNames& names);

  void showFolder(const MainFolder& folder);

  std::shared_ptr<const MainFolder> _folder;  ///< Never null.
  ScrollColumn* _scroll;
  IconView* _icon;
  TextLabel* _name;
  TextLabel* _path;
  Switch* _temporary;
  FormSection* _temporarySection;
  FormSection* _previewSection;
  TextLabel* _previewHeadline;
  ForecastList* _forecast;
  RulesSection* _rules;
  DisposalSection* _disposal;
};

}  // namespace tidemar
