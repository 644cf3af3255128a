// Draws every screen in its states to PNG files, in light and dark. A tool for those who change the
// views: QT_SCALE_FACTOR=2 draws them twice as large, "rtl" mirrors them, "desktop" leaves them the
// style, colours and type of the desktop that they are drawn on, and a number is the type's size in
// points. Usage: screens directory [rtl] [desktop] [points]

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <functional>
#include <memory>

#include "TidemarUI/State/MainState.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/QuietStyle.h"
#include "TidemarUI/Views/SettingsView.h"
#include "TidemarUI/Views/SetupView.h"

namespace tidemar {
namespace {

constexpr Date now{1'794'787'200};
constexpr std::int64_t megabyte = 1'000'000;

Item item(const std::string& path, std::int64_t size) {
  return {FileURL(path), now, size};
}

/// A folder with so many items due, and others that go on the days to come.
FolderReport report(std::int64_t id, const std::string& path, std::vector<std::string> due,
                    std::vector<std::pair<std::string, double>> upcoming,
                    TemporarySettings settings = {}) {
  FolderReport result;
  result.folder.id = id;
  result.folder.path = path;
  result.folder.settings = settings;
  FolderStatus status;
  status.isTagged = true;
  std::vector<Item> items;
  for (const std::string& name : due)
    items.push_back(item(path + "/" + name, 430 * megabyte));
  for (const auto& [name, days] : upcoming)
    items.push_back(item(path + "/" + name, 7 * megabyte));
  status.items = std::move(items);
  const Item* next = status.items.begin();
  for (std::size_t i = 0; i < due.size(); ++i)
    status.dueNow.push_back({next++, {Rule::age}});
  for (const auto& [name, days] : upcoming)
    status.upcoming.push_back({next++, now + days * secondsPerDay});
  result.status = status;
  return result;
}

FolderReport downloads() {
  return report(1, "/home/mara/Downloads",
                {"debian-12.iso", "invoice-2026-08.pdf", "old-slides.odp"},
                {{"Screenshot from 2026-08-25.png", 1},
                 {"notes.zip", 3},
                 {"build-logs", 3.1},
                 {"holiday-photos-from-the-lake-with-everyone.tar.gz", 3.2}});
}

FolderReport scratch() {
  TemporarySettings settings;
  settings.disposal = Disposal::delete_;
  settings.maxAgeDays.reset();
  settings.sizeLimit = 10'000 * megabyte;
  settings.automatic = true;
  settings.emptyOnRestart = true;
  FolderReport result = report(3, "/home/mara/Scratch", {}, {}, settings);
  std::vector<Item> items;
  for (int index = 1; index <= 48; ++index) {
    const std::string name = "/frame-" + std::to_string(1000 + index).substr(1) + ".exr";
    items.push_back(item(result.folder.path + name, 170 * megabyte));
  }
  result.status->items = std::move(items);
  return result;
}

FolderReport unreadable() {
  FolderReport result = report(4, "/media/mara/Archive/Render cache", {}, {});
  result.status.reset();
  return result;
}

FolderReport protectedRoot() {
  FolderReport result = report(5, "/home/mara/Documents", {}, {});
  result.status->isProtectedRoot = true;
  result.status->isTagged = false;
  return result;
}

std::vector<FolderReport> many() {
  return {downloads(),
          report(2, "/home/mara/Pictures/Screenshots", {}, {{"Screenshot 12.png", 1}}),
          scratch(),
          unreadable(),
          protectedRoot(),
          report(6, "/home/mara/A folder with a very long name that nobody would ever want to type",
                 {}, {})};
}

std::vector<JournalEntry> someJournal() {
  std::vector<JournalEntry> journal;
  const auto add = [&](std::int64_t folder, int count, Disposal disposal, double hoursAgo,
                       bool isUndone) {
    for (int index = 0; index < count; ++index) {
      JournalEntry entry;
      entry.id = static_cast<std::int64_t>(journal.size()) + 1;
      entry.folderID = folder;
      entry.disposal = disposal;
      entry.performedAt = now - hoursAgo * 3600;
      if (isUndone) entry.undoneAt = now;
      journal.push_back(entry);
    }
  };
  add(1, 7, Disposal::bin, 3, false);
  add(2, 2, Disposal::bin, 18, true);
  add(3, 21, Disposal::delete_, 25, false);
  return journal;
}

QSize fitting(const QWidget& view) {
  return {view.width(), view.layout()->totalHeightForWidth(view.width())};
}

class Painter {
 public:
  explicit Painter(QString directory) : _directory(std::move(directory)) {}

  void draw(const QString& name, QWidget& view, QSize size) {
    view.setPalette(QApplication::palette());
    view.resize(size.expandedTo(view.minimumSizeHint()));
    view.show();
    for (int round = 0; round < 3; ++round)
      QApplication::processEvents();
    save(name, view);
    view.hide();
  }

  void save(const QString& name, QWidget& view) {
    view.grab().save(_directory + u'/' + name + u'-' + variant + QStringLiteral(".png"));
  }

  QString variant;

 private:
  QString _directory;
};

void drawScreens(Painter& painter) {
  const Formats formats("en_GB", "UTC");
  const auto state = [&](const std::vector<FolderReport>& reports, bool isExtensionOff = false) {
    return std::make_shared<const MainState>(
        mainState(reports, someJournal(), 212'400 * megabyte, isExtensionOff, now, formats, "Bin"));
  };
  const auto drawMain = [&](const QString& name, const std::vector<FolderReport>& reports,
                            MainSelection selection, QSize size) {
    MainView view(formats, "Bin");
    view.setState(state(reports));
    view.setSelection(selection);
    painter.draw(name, view, size);
  };
  drawMain(QStringLiteral("overview-many"), many(), MainSelection::overview(), {820, 640});
  drawMain(QStringLiteral("overview-small"), many(), MainSelection::overview(), {640, 420});
  drawMain(QStringLiteral("overview-empty"), {}, MainSelection::overview(), {820, 420});
  drawMain(QStringLiteral("folder-bin"), many(), MainSelection::folder(1), {820, 860});
  drawMain(QStringLiteral("folder-delete"), many(), MainSelection::folder(3), {820, 780});
  drawMain(QStringLiteral("folder-unreadable"), many(), MainSelection::folder(4), {820, 420});
  drawMain(QStringLiteral("folder-protected"), many(), MainSelection::folder(5), {820, 420});
  drawMain(QStringLiteral("folder-nothing"), many(), MainSelection::folder(6), {640, 640});
  drawMain(QStringLiteral("overview-nothing"), {report(6, "/home/mara/Tidy", {}, {{"a", 40}})},
           MainSelection::overview(), {820, 420});

  const auto drawPopover = [&](const QString& name, const std::vector<FolderReport>& reports,
                               bool isExtensionOff) {
    MenuBarView view;
    const auto main = state(reports, isExtensionOff);
    view.setState({main, &main->overview});
    painter.draw(name, view, view.sizeHint());
  };
  drawPopover(QStringLiteral("popover-many"), many(), true);
  drawPopover(QStringLiteral("popover-one"), {downloads()}, false);
  drawPopover(QStringLiteral("popover-empty"), {}, true);

  SettingsView settings;
  settings.setState(
      {.openAtLogin = true, .openAtLoginRequiresApproval = true, .showInMenuBar = false});
  painter.draw(QStringLiteral("settings-approval"), settings, fitting(settings));
  settings.setState({.openAtLogin = true});
  painter.draw(QStringLiteral("settings"), settings, fitting(settings));
  SetupView setup;
  painter.draw(QStringLiteral("setup-nothing-done"), setup, fitting(setup));
  setup.setState(
      {.isExtensionEnabled = true, .isOpenAtLogin = true, .isOpenAtLoginRequiresApproval = true});
  painter.draw(QStringLiteral("setup-approval"), setup, fitting(setup));
  setup.setState(
      {.isExtensionEnabled = true, .isOpenAtLogin = true, .isNotificationsEnabled = true});
  painter.draw(QStringLiteral("setup-done"), setup, fitting(setup));
}

void drawConfirmation(Painter& painter) {
  const Formats formats("en_GB", "UTC");
  MainView view(formats, "Bin");
  view.setState(
      std::make_shared<const MainState>(mainState(many(), {}, 0, false, now, formats, "Bin")));
  view.setSelection(MainSelection::folder(1));
  view.resize(820, 860);
  view.show();
  QApplication::processEvents();
  auto* picker = view.findChild<QComboBox*>();
  emit picker->activated(1);
  for (int round = 0; round < 3; ++round)
    QApplication::processEvents();
  painter.save(QStringLiteral("delete-confirmation"), *view.findChild<QMessageBox*>());
}

void drawIcons(Painter& painter) {
  for (const int size : {16, 22, 64}) {
    QWidget panel;
    auto* line = new QHBoxLayout(&panel);
    for (const QIcon& icon : {icons::menuBar(), icons::application(), icons::folder("/x")}) {
      auto* label = new QLabel;
      label->setPixmap(icon.pixmap(QSize(size, size), panel.devicePixelRatio()));
      line->addWidget(label);
    }
    painter.draw(QStringLiteral("icons-%1").arg(size), panel, panel.sizeHint());
  }
}

}  // namespace
}  // namespace tidemar

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  const QString directory = arguments.value(1, QStringLiteral("screens"));
  QDir().mkpath(directory);
  tidemar::adoptQuietStyle();
  if (arguments.contains(QStringLiteral("rtl"))) QApplication::setLayoutDirection(Qt::RightToLeft);
  const bool isDesktops = arguments.contains(QStringLiteral("desktop"));
  QFont font = QApplication::font();
  if (!isDesktops) {
    font = QFont(QStringLiteral("Inter"));
    font.setPixelSize(13);
  }
  if (const double points = arguments.last().toDouble(); points > 0) font.setPointSizeF(points);
  QApplication::setFont(font);

  tidemar::Painter painter(directory);
  if (isDesktops) {
    painter.variant = QStringLiteral("desktop");
    tidemar::drawScreens(painter);
    tidemar::drawConfirmation(painter);
    return 0;
  }
  for (const bool isDark : {false, true}) {
    QApplication::setPalette(tidemar::quietPalette(isDark));
    painter.variant = isDark ? QStringLiteral("dark") : QStringLiteral("light");
    tidemar::drawScreens(painter);
    tidemar::drawConfirmation(painter);
    tidemar::drawIcons(painter);
  }
}
