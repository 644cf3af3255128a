#include "Platform/Desktop/FileManagerExtension.h"

#include <QCoreApplication>
#include <QFile>
#include <algorithm>
#include <utility>

#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Extension/MenuEntries.h"
#include "Platform/Extension/ProgramSearch.h"

namespace tidemar {
namespace {

FileURL helperBesideThisProgram() {
  const QByteArray directory = QFile::encodeName(QCoreApplication::applicationDirPath());
  return FileURL(directory.toStdString()).appendingPathComponent("tidemar-make-temporary");
}

}  // namespace

FileManagerExtension::FileManagerExtension(ExtensionTexts texts, Alerts& alerts)
    : FileManagerExtension(menuEntries(helperBesideThisProgram()), std::move(texts), alerts) {}

FileManagerExtension::FileManagerExtension(std::vector<std::unique_ptr<MenuEntry>> entries,
                                           ExtensionTexts texts, Alerts& alerts)
    : _entries(std::move(entries)), _texts(std::move(texts)), _alerts(alerts) {}

FileManagerExtension::~FileManagerExtension() {
  delete _window;
}

bool FileManagerExtension::isEnabled() const {
  return std::ranges::any_of(
      _entries, [](const auto& entry) { return entry->isAvailable() && entry->isInstalled(); });
}

void FileManagerExtension::showManagementInterface() {
  if (!_window) {
    std::vector<MenuEntry*> offered;
    for (const auto& entry : _entries) {
      // What a file manager left behind that is gone by now can still be switched off.
      if (entry->isAvailable() || entry->isInstalled()) offered.push_back(entry.get());
    }
    ExtensionTexts texts = _texts;
    if (!hasProgram("pcmanfm") || canExtendPCManFM(helperBesideThisProgram())) texts.note.clear();
    _window = new ExtensionWindow(
        offered, texts, [this](MenuEntry& entry, bool isOn) { switchEntry(entry, isOn); });
    _window->setAttribute(Qt::WA_DeleteOnClose);
  }
  bringForward(*_window);
}

void FileManagerExtension::switchEntry(MenuEntry& entry, bool isOn) {
  try {
    if (isOn) {
      entry.install();
    } else {
      entry.uninstall();
    }
  } catch (const std::exception& error) {
    _alerts.run({.message = _texts.failed(entry.name(), isOn), .information = error.what()});
  }
  if (onChange) onChange();
}

}  // namespace tidemar
