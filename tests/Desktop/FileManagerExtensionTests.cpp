#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>

#include "FakeDesktop.h"
#include "Platform/Desktop/FileManagerExtension.h"
#include "support/RecordingAlerts.h"

namespace tidemar::testing {
namespace {

struct FakeEntry : MenuEntry {
  FakeEntry(std::string name, bool isAvailable, bool isInstalled)
      : title(std::move(name)), isThere(isAvailable), isOn(isInstalled) {}
  std::string name() const override { return title; }
  bool isAvailable() const override { return isThere; }
  bool isInstalled() const override { return isOn; }
  void install() override {
    if (title == "Refusing") throw std::runtime_error("no room");
    isOn = true;
  }
  void uninstall() override { isOn = false; }

  std::string title;
  bool isThere;
  bool isOn;
};

class FileManagerExtensionTest : public ::testing::Test {
 protected:
  void make(std::vector<FakeEntry> kinds) {
    entries.clear();
    std::vector<std::unique_ptr<MenuEntry>> owned;
    for (const FakeEntry& kind : kinds) {
      owned.push_back(std::make_unique<FakeEntry>(kind));
      entries.push_back(static_cast<FakeEntry*>(owned.back().get()));
    }
    const ExtensionTexts texts{
        "title", "explanation",
        "hint",  "none here",
        "note",  [](const std::string& name, bool isOn) {
                                 return name + (isOn ? " on" : " off"); }};
    extension = std::make_unique<FileManagerExtension>(std::move(owned), texts, alerts);
    extension->onChange = [this] { ++changes; };
  }

  /// The window that is open, alone.
  static QDialog& window() {
    const QWidgetList windows = QApplication::topLevelWidgets();
    EXPECT_EQ(windows.size(), 1);
    return dynamic_cast<QDialog&>(*windows.at(0));
  }

  /// Its texts and boxes, in their order.
  std::string shown() {
    extension->showManagementInterface();
    std::string text;
    for (const QWidget* part : window().findChildren<QWidget*>()) {
      if (const auto* label = dynamic_cast<const QLabel*>(part))
        text += label->text().toStdString() + "|";
      if (const auto* box = dynamic_cast<const QCheckBox*>(part))
        text += box->text().toStdString() + (box->isChecked() ? " on|" : " off|");
    }
    return text;
  }

  QCheckBox* box(int place) { return window().findChildren<QCheckBox*>().at(place); }

  TemporaryDirectory programs;
  ScopedEnvironment path{"PATH", programs.path()};
  RecordingAlerts alerts;
  std::vector<FakeEntry*> entries;
  std::unique_ptr<FileManagerExtension> extension;
  int changes = 0;
};

TEST_F(FileManagerExtensionTest, OffersWhatIsThereOrWasLeftBehindAndShowsWhatCameOfASwitch) {
  make({{"Missing", false, false},
        {"Gone", false, true},
        {"Files", true, false},
        {"Refusing", true, false}});
  EXPECT_FALSE(extension->isEnabled()) << "what is switched on isn't there";
  EXPECT_EQ(shown(), "explanation|Gone on|Files off|Refusing off|hint|");
  for (const int place : {0, 1, 2})
    box(place)->toggle();
  EXPECT_EQ(shown(), "explanation|Gone off|Files on|Refusing off|hint|");
  EXPECT_EQ(changes, 3);
  EXPECT_EQ(alerts.told, std::vector<std::string>{"Refusing on\nno room"});
  EXPECT_TRUE(extension->isEnabled());

  entries[1]->isOn = true;  // By another program.
  entries[2]->isOn = false;
  QEvent activation(QEvent::WindowActivate);
  QApplication::sendEvent(&window(), &activation);
  EXPECT_EQ(shown(), "explanation|Gone on|Files off|Refusing off|hint|");
  EXPECT_EQ(changes, 3);
  window().findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Close)->click();
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(QApplication::topLevelWidgets().isEmpty());
}

TEST_F(FileManagerExtensionTest, SaysWhatCannotBeExtendedWhereThatIsThere) {
  make({});
  EXPECT_EQ(shown(), "none here|");
  writeFile(programs.url("pcmanfm"), "");
  chmod(programs.path("pcmanfm").c_str(), 0700);
  make({});
  EXPECT_EQ(shown(), "none here|note|");
}

}  // namespace
}  // namespace tidemar::testing
