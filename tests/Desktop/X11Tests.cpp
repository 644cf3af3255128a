#include <QIcon>
#include <QImage>
#include <QProcess>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>

#include <xcb/xinput.h>

#include "FakeDesktop.h"
#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Desktop/PanelGround.h"
#include "Platform/Desktop/PointerPresses.h"
#include "Platform/Desktop/TaskBar.h"
#include "Platform/Desktop/TrayHost.h"
#include "Platform/Desktop/X11.h"

namespace tidemar::testing {
namespace {

using namespace Qt::StringLiterals;

/// Another client of the display, as a window manager or a panel is one.
class X11Test : public ::testing::Test {
 protected:
  void SetUp() override {
    if (X11::connection() == nullptr) GTEST_SKIP() << "needs Xvfb";
    connection.reset(xcb_connect(nullptr, nullptr));
    screen = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data;
    root = screen->root;
    const std::uint32_t events =
        XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection.get(), root, XCB_CW_EVENT_MASK, &events);
    sync(connection.get());
  }

  /// What the client asked of the display before is done behind it.
  static void sync(xcb_connection_t* client) {
    X11::owned(xcb_get_input_focus_reply(client, xcb_get_input_focus(client), nullptr));
  }

  /// Lets the program handle all that this client has sent to it: waits for an event that follows.
  void settle() {
    QWidget last;
    last.show();
    sync(X11::connection());
    const std::uint32_t width = 321;
    xcb_configure_window(connection.get(), static_cast<xcb_window_t>(last.winId()),
                         XCB_CONFIG_WINDOW_WIDTH, &width);
    sync(connection.get());
    waitUntil([&] { return last.width() == 321; });
  }

  /// The messages that clients have sent to all.
  std::vector<xcb_client_message_event_t> messages() {
    sync(X11::connection());
    sync(connection.get());
    std::vector<xcb_client_message_event_t> found;
    while (const auto event = X11::owned(xcb_poll_for_event(connection.get()))) {
      if ((event->response_type & 0x7F) == XCB_CLIENT_MESSAGE)
        found.push_back(*reinterpret_cast<const xcb_client_message_event_t*>(event.get()));
    }
    return found;
  }

  std::vector<std::uint32_t> property(const QWidget& window, const char* name) {
    const auto cookie =
        xcb_get_property(X11::connection(), 0, static_cast<xcb_window_t>(window.winId()),
                         X11::atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 100);
    const auto reply = X11::owned(xcb_get_property_reply(X11::connection(), cookie, nullptr));
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + reply->value_len};
  }

  /// Owns the selection by which trays are known, and announces it as a tray does.
  void becomeTray() {
    tray = xcb_generate_id(connection.get());
    const std::uint32_t ground = screen->black_pixel;
    xcb_create_window(connection.get(), screen->root_depth, tray, root, 100, 100, 24, 24, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL,
                      &ground);
    xcb_map_window(connection.get(), tray);
    xcb_set_selection_owner(connection.get(), tray, X11::atom("_NET_SYSTEM_TRAY_S0"), 0);
    announce("MANAGER");
  }

  /// Takes in the icons that ask for it (System Tray Protocol).
  bool hasDocked() {
    for (const auto& message : messages()) {
      if (message.type != X11::atom("_NET_SYSTEM_TRAY_OPCODE") || message.data.data32[1] != 0)
        continue;
      icon = message.data.data32[2];
      xcb_reparent_window(connection.get(), icon, tray, 0, 0);
      xcb_map_window(connection.get(), icon);
      sync(connection.get());
      return true;
    }
    return false;
  }

  void announce(const char* type) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = root;
    message.type = X11::atom(type);
    xcb_send_event(connection.get(), 0, root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    sync(connection.get());
  }

  static void userDoes(const QStringList& arguments) {
    ASSERT_EQ(QProcess::execute(u"xdotool"_s, arguments), 0);
    QCoreApplication::processEvents();
  }

  std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection{nullptr, &xcb_disconnect};
  const xcb_screen_t* screen = nullptr;
  xcb_window_t root = XCB_WINDOW_NONE;
  xcb_window_t tray = XCB_WINDOW_NONE;
  xcb_window_t icon = XCB_WINDOW_NONE;  ///< In the tray.
};

TEST_F(X11Test, ATrayIsSeenWhenItComesAndOneThatIsThereAtOnce) {
  TrayHost host;
  int times = 0;
  QObject::connect(&host, &TrayHost::becameAvailable, [&times] { ++times; });
  announce("MANAGER");
  settle();
  EXPECT_FALSE(host.isAvailable()) << "something else announced itself";
  becomeTray();
  waitUntil([&] { return host.isAvailable(); });
  becomeTray();
  settle();
  EXPECT_EQ(times, 1);
  EXPECT_TRUE(TrayHost().isAvailable());
}

TEST_F(X11Test, PressesAnywhereAreToldWhileThatIsOnAndTheWheelIsNone) {
  PointerPresses presses;
  int count = 0;
  QObject::connect(&presses, &PointerPresses::pressed, [&count] { ++count; });
  const auto selected = [this] {
    const auto cookie = xcb_input_xi_get_selected_events(X11::connection(), root);
    return X11::owned(xcb_input_xi_get_selected_events_reply(X11::connection(), cookie, nullptr))
        ->num_masks;
  };
  const int before = selected();
  // What is told comes in the order of the presses.
  for (const int expected : {1, 2}) {
    presses.follow(false);
    EXPECT_EQ(selected(), before) << "nothing wakes the program";
    userDoes({u"click"_s, u"1"_s});
    presses.follow(true);
    userDoes({u"click"_s, u"4"_s, u"click"_s, u"3"_s});
    waitUntil([&] { return count >= expected; });
    EXPECT_EQ(count, expected);
  }
}

TEST_F(X11Test, AWindowIsLeftOutOfTheTaskBar) {
  QWidget window;
  TaskBar::leaveOut(window);
  EXPECT_EQ(property(window, "_NET_WM_STATE"),
            (std::vector{X11::atom("_NET_WM_STATE_SKIP_TASKBAR"),
                         X11::atom("_NET_WM_STATE_SKIP_PAGER")}));
}

TEST_F(X11Test, ARequestEndsItsStartAndLendsItsTimeToOneWindow) {
  QWidget window;
  accept({.token = {}, .startupID = u"a\"b\\"_s + QString(30, u'x') + u"_TIME77"_s});
  std::string text;
  for (const auto& message : messages()) {
    EXPECT_EQ(message.type,
              X11::atom(text.empty() ? "_NET_STARTUP_INFO_BEGIN" : "_NET_STARTUP_INFO"));
    text.append(reinterpret_cast<const char*>(message.data.data8), 20);
  }
  EXPECT_EQ(text.substr(0, text.find('\0')),
            "remove: ID=\"a\\\"b\\\\" + std::string(30, 'x') + "_TIME77\"");
  bringForward(window);
  EXPECT_TRUE(window.isVisible());
  std::vector<std::uint32_t> times;
  const auto bringAgain = [&] {
    bringForward(window);
    for (const auto& message : messages()) {
      if (message.type == X11::atom("_NET_ACTIVE_WINDOW")) {
        EXPECT_EQ(message.window, window.winId());
        EXPECT_EQ(message.data.data32[0], 1U) << "by an application";
        times.push_back(message.data.data32[1]);
      }
    }
  };
  bringAgain();
  for (const QString& startupID :
       {u"a_TIME78"_s, u"79"_s, u"_TIMEx"_s, QString(1000, u'x') + u"_TIME80"_s}) {
    accept({.token = {}, .startupID = startupID});
    bringAgain();
  }
  EXPECT_EQ(times, (std::vector<std::uint32_t>{77, 78}));
}

TEST_F(X11Test, ARequestToAnotherProgramBearsTheTimeOfTheUsersAction) {
  EXPECT_EQ(startupIDForRequest(), QString()) << "no window of ours has the focus";
  QWidget window;
  window.show();
  window.activateWindow();
  waitUntil([&] { return window.isActiveWindow(); });
  userDoes({u"key"_s, u"a"_s});
  waitUntil([&] { return !startupIDForRequest().isEmpty(); });
  const QString first = startupIDForRequest();
  EXPECT_TRUE(first.startsWith(u"tidemar-%1-"_s.arg(QCoreApplication::applicationPid())));
  EXPECT_GT(first.mid(first.indexOf(u"_TIME"_s) + 5).toUInt(), 0U);
  EXPECT_NE(startupIDForRequest(), first) << "each request is one of its own";
}

TEST_F(X11Test, ThePanelUnderAnEmbeddedIconIsLookedAtAgainUnderThePointer) {
  QPixmap picture(24, 24);
  picture.fill(Qt::transparent);
  QSystemTrayIcon shown{QIcon(picture)};
  EXPECT_FALSE(PanelGround(shown).isEmbedded());
  becomeTray();
  shown.show();
  waitUntil([&] { return hasDocked(); });
  PanelGround ground(shown);
  EXPECT_TRUE(ground.isEmbedded());
  std::vector<bool> told;
  QObject::connect(&ground, &PanelGround::told, [&told](bool isDark) { told.push_back(isDark); });
  waitUntil([&] { return !told.empty(); });
  ASSERT_FALSE(told.empty());
  for (const bool isDark : {false, true}) {
    const std::uint32_t color = isDark ? screen->black_pixel : screen->white_pixel;
    xcb_change_window_attributes(connection.get(), tray, XCB_CW_BACK_PIXEL, &color);
    for (const xcb_window_t window : {tray, icon})
      xcb_clear_area(connection.get(), 1, window, 0, 0, 0, 0);
    sync(connection.get());
    const auto isTold = [&] { return told.back() == isDark; };
    // The icon may be painted anew only after it was looked at.
    for (int turn = 0; turn < 20 && !isTold(); ++turn) {
      userDoes({u"mousemove"_s, u"10"_s, u"10"_s, u"mousemove"_s, u"110"_s, u"110"_s});
      std::ignore = QTest::qWaitFor(isTold, 1000);
    }
  }
  EXPECT_EQ(told, (std::vector{true, false, true}));
  EXPECT_FALSE(ground.findChild<QTimer*>()->isActive()) << "nothing wakes the program";
}

TEST(PanelGround, IsDarkByItsTopAndBottomLine) {
  QImage picture(4, 3, QImage::Format_RGB32);
  const auto isDark = [&](int top, int bottom) {
    picture.fill(Qt::white);
    for (int x = 0; x < picture.width(); ++x) {
      picture.setPixel(x, 0, qRgb(top, top, top));
      picture.setPixel(x, 2, qRgb(bottom, bottom, bottom));
    }
    return isGroundDark(picture);
  };
  EXPECT_EQ(isDark(127, 128), true);
  EXPECT_EQ(isDark(128, 128), false);
  EXPECT_EQ(isDark(0, 255), true);
  EXPECT_EQ(isGroundDark({}), std::nullopt);
}

}  // namespace
}  // namespace tidemar::testing
