#include "Tidemar/MainContainerView.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <QVBoxLayout>
#include <filesystem>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/SystemBin.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

/// The folders among what is dragged, in the bytes of their paths.
std::vector<FileURL> foldersIn(const QMimeData& data) {
  std::vector<FileURL> folders;
  for (const QUrl& url : data.urls()) {
    if (!url.isLocalFile()) continue;
    const std::string path =
        QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) folders.emplace_back(path);
  }
  return folders;
}

/// Whoever drags a folder deletes his own after a move, so none is accepted.
void acceptWithoutMoving(QDropEvent& event) {
  const Qt::DropActions possible = event.possibleActions();
  const Qt::DropAction action = possible.testFlag(Qt::LinkAction) ? Qt::LinkAction : Qt::CopyAction;
  event.setDropAction(action);
  event.setAccepted(possible.testFlag(action));
}

}  // namespace

MainContainerView::MainContainerView(const ScreenContext& context, MainWindowState& windowState)
    : _context(context),
      _windowState(windowState),
      _view(new MainView(context.currentFormats(), SystemBin::name(), context.names)),
      _states(context.model.executor(),
              [this](auto state) {
                if (state) _view->setState(std::move(state));
                _view->setUpdatesEnabled(true);
              }),
      _observer(context.model, [this] { refresh(); }) {
  // Until the first state is there nothing is shown, rather than no folders.
  _view->setUpdatesEnabled(false);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(_view);
  setAcceptDrops(true);
  connectClosures();
  connect(&windowState, &MainWindowState::selectionChanged, this,
          &MainContainerView::selectionChanged);
  refresh();
  _view->setSelection(windowState.selection());
}

void MainContainerView::connectClosures() {
  _view->onSelect = [this](const auto& selection) { _windowState.select(selection); };
  _view->onAddFolder = [this] { chooseFolder(); };
  _view->onRemoveFolder = [this](std::int64_t id) { removeFolder(id); };
  _view->onSetTemporary = [this](std::int64_t id, bool isTemporary) {
    if (const FolderReport* found = _context.model.reportForFolder(id))
      _context.model.setTemporary(found->folder, isTemporary);
  };
  _view->onChangeSettings = [this](std::int64_t id, const TemporarySettings& shown,
                                   const TemporarySettings& wanted) {
    _context.model.changeSettings(id, shown, wanted);
  };
  _view->onPutBack = [this](const RecentRun& run) { _context.model.putBack(run.journalEntryIDs); };
  _view->onShowInFinder = _context.showInFileManager;
}

void MainContainerView::refresh() {
  _states.ask([snapshot = _context.model.snapshot(),
               isExtensionOff = _context.model.isFinderExtensionOff(), now = _context.currentDate(),
               formats = _context.currentFormats(), bin = SystemBin::name()] {
    return mainState(snapshot->reports, snapshot->journal, snapshot->freeSpace, isExtensionOff, now,
                     formats, bin);
  });
}

void MainContainerView::chooseFolder() {
  // An assistive tool can press the button under the panel.
  if (_panel) return;
  _panel = new QFileDialog(window(), textOf(labels::addAFolder), QDir::homePath());
  _panel->setAttribute(Qt::WA_DeleteOnClose);
  _panel->setFileMode(QFileDialog::Directory);
  _panel->setOption(QFileDialog::ShowDirsOnly);
  _panel->setLabelText(QFileDialog::Accept, textOf(labels::addPrompt));
  connect(_panel, &QFileDialog::fileSelected, this,
          [this](const QString& path) { addFolder(FileURL(path.toStdString())); });
  _panel->open();
}

QCoro::Task<void> MainContainerView::addFolder(FileURL url) {
  // The window may be closed before the answer; what it needs after that outlives it.
  MainWindowState& windowState = _windowState;
  const std::optional<Folder> folder = co_await _context.model.addFolder(url);
  if (folder && folder->id) windowState.select(MainSelection::folder(*folder->id));
}

void MainContainerView::dragEnterEvent(QDragEnterEvent* event) {
  if (!foldersIn(*event->mimeData()).empty()) acceptWithoutMoving(*event);
}

void MainContainerView::dropEvent(QDropEvent* event) {
  acceptWithoutMoving(*event);
  if (!event->isAccepted()) return;
  for (const FileURL& folder : foldersIn(*event->mimeData()))
    addFolder(folder);
}

void MainContainerView::removeFolder(std::int64_t id) {
  const FolderReport* found = _context.model.reportForFolder(id);
  if (found == nullptr) return;
  const Folder folder = found->folder;
  if (_windowState.selection() == MainSelection::folder(id))
    _windowState.select(MainSelection::overview());
  _context.model.removeFolder(folder);
}

void MainContainerView::selectionChanged(const MainWindowState::Selection& before,
                                         MainWindowState::Cause cause) {
  // Shown first, so that an edit that ends with it is on its way before the cycle.
  _view->setSelection(_windowState.selection());
  if (before && before->folderID && cause == MainWindowState::Cause::user)
    _context.model.runBackgroundCycle();
}

}  // namespace tidemar
