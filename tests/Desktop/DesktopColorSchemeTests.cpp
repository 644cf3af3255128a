#include <QDBusConnectionInterface>

#include "FakeDesktop.h"
#include "Platform/Desktop/DesktopColorScheme.h"
#include "Platform/Desktop/PlasmaColors.h"

namespace tidemar {
namespace {

using namespace testing;
using namespace Qt::StringLiterals;
using Preference = DesktopColorScheme::Preference;

const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString settings = u"org.freedesktop.portal.Settings"_s;
const QString appearance = u"org.freedesktop.appearance"_s;
const QString key = u"color-scheme"_s;

QVariant inVariant(const QVariant& value) {
  return QVariant::fromValue(QDBusVariant(value));
}

class DesktopColorSchemeTest : public BusTest {
 protected:
  void startPortal(uint answer) {
    portal.emplace(bus->connect(), u"org.freedesktop.portal.Desktop"_s, path,
                   [answer](const QDBusMessage& call) {
                     return call.createReply(inVariant(inVariant(answer)));
                   });
  }

  void follow() {
    const QDBusConnection connection = bus->connect();
    scheme.emplace(connection);
    QObject::connect(&*scheme, &DesktopColorScheme::told,
                     [this](Preference preference) { told.push_back(preference); });
    scheme->follow();
    scheme->follow();
    // Once this is answered the bus knows what was asked for before.
    EXPECT_TRUE(connection.interface()->registeredServiceNames().isValid());
  }

  void change(const QString& group, uint value) {
    portal->send(path, settings, u"SettingChanged"_s, {group, key, inVariant(value)});
  }

  /// What was told until so many answers came.
  std::vector<Preference> heard(std::size_t count) {
    waitUntil([&] { return told.size() >= count; });
    return std::exchange(told, {});
  }

  std::optional<FakeService> portal;
  std::optional<DesktopColorScheme> scheme;
  std::vector<Preference> told;
};

TEST_F(DesktopColorSchemeTest, TellsThePortalsAnswerOnce) {
  for (const auto& [answer, preference] :
       {std::pair(0U, Preference::none), std::pair(1U, Preference::dark),
        std::pair(2U, Preference::light), std::pair(7U, Preference::none)}) {
    startPortal(answer);
    follow();
    EXPECT_EQ(heard(1), std::vector{preference});
    EXPECT_EQ(portal->calls.size(), 1U);
  }
}

TEST_F(DesktopColorSchemeTest, TellsEveryChangeOfThisSettingByAPortalThatCameLater) {
  follow();
  startPortal(1);
  change(u"org.gnome.desktop.interface"_s, 2);
  change(appearance, 2);
  change(appearance, 0);
  change(appearance, 1);
  EXPECT_EQ(heard(3), (std::vector{Preference::light, Preference::none, Preference::dark}));
}

TEST_F(DesktopColorSchemeTest, PlasmaTellsOfItsColoursWithoutAPortal) {
  follow();
  FakeService plasma(bus->connect(), u"org.kde.plasma"_s, u"/KGlobalSettings"_s,
                     [](const QDBusMessage&) { return QDBusMessage(); });
  const auto notify = [&](int kind) {
    plasma.send(u"/KGlobalSettings"_s, u"org.kde.KGlobalSettings"_s, u"notifyChange"_s, {kind, 0});
  };
  notify(1);
  notify(0);
  EXPECT_EQ(heard(1), std::vector{Preference::none});
}

TEST(PlasmaColors, AreThoseOfItsSettingsWhereAllAreThere) {
  const TemporaryDirectory home;
  const ScopedHome scope(home.url());
  std::filesystem::create_directory(home.path(".config"));
  const auto write = [&](const std::vector<const char*>& groups) {
    std::string text;
    for (int number = 1; const char* group : groups) {
      text += std::string("[Colors:") + group + "]\nBackgroundNormal=" + std::to_string(number);
      text += ",2,3\nForegroundNormal=" + std::to_string(number + 1) + ", 5,6\n";
      number += 2;
    }
    writeFile(home.url(".config/kdeglobals"), text);
  };
  const ScopedEnvironment desktop("XDG_CURRENT_DESKTOP", "KDE");
  EXPECT_EQ(PlasmaColors::palette(), std::nullopt) << "without settings";
  write({"Window", "View", "Button", "Selection"});
  EXPECT_EQ(PlasmaColors::palette(), std::nullopt);
  write({"Window", "View", "Button", "Selection", "Tooltip"});
  const QPalette palette = PlasmaColors::palette().value();
  std::vector<int> reds;
  for (const auto role : {QPalette::Window, QPalette::WindowText, QPalette::Base, QPalette::Text,
                          QPalette::Button, QPalette::ButtonText, QPalette::Highlight,
                          QPalette::HighlightedText, QPalette::ToolTipBase, QPalette::ToolTipText})
    reds.push_back(palette.color(role).red());
  EXPECT_EQ(reds, (std::vector{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(palette.color(QPalette::Text), QColor(4, 5, 6));
  const ScopedEnvironment other("XDG_CURRENT_DESKTOP", "GNOME");
  EXPECT_EQ(PlasmaColors::palette(), std::nullopt);
}

}  // namespace
}  // namespace tidemar
