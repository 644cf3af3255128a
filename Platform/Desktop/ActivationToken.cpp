#include "Platform/Desktop/ActivationToken.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Desktop/X11.h"

namespace tidemar {
namespace {

const QString tokenKey = QStringLiteral("activation-token");
const QString startupIDKey = QStringLiteral("desktop-startup-id");

constexpr qsizetype longestID = 1000;

/// The server's time of the user's action, which an ID ends with; of the request that is pending.
std::optional<std::uint32_t> pendingTime;

std::optional<std::uint32_t> timeOf(const QString& startupID) {
  const QString mark = QStringLiteral("_TIME");
  const qsizetype at = startupID.lastIndexOf(mark);
  bool isNumber = false;
  const std::uint32_t time = startupID.mid(at + mark.size()).toUInt(&isNumber);
  return at >= 0 && isNumber ? std::optional(time) : std::nullopt;
}

xcb_window_t rootWindow(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

/// Tells all who watch for it that the start with this ID is over: one text in messages of 20
/// bytes, the last with its NUL.
void endStartup(xcb_connection_t* connection, const std::string& startupID) {
  std::string text = "remove: ID=\"";
  for (const char c : startupID) {
    if (c == '"' || c == '\\') text += '\\';
    text += c;
  }
  text += '"';
  text += '\0';

  const xcb_window_t root = rootWindow(connection);
  const xcb_window_t sender = xcb_generate_id(connection);
  xcb_create_window(connection, 0, sender, root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                    XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 8;
  message.window = sender;
  message.type = X11::atom("_NET_STARTUP_INFO_BEGIN");
  const xcb_atom_t following = X11::atom("_NET_STARTUP_INFO");
  for (std::size_t at = 0; at < text.size(); at += sizeof message.data.data8) {
    std::ranges::fill(message.data.data8, std::uint8_t{0});
    const std::string piece = text.substr(at, sizeof message.data.data8);
    std::ranges::copy(piece, message.data.data8);
    xcb_send_event(connection, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                   reinterpret_cast<const char*>(&message));
    message.type = following;
  }
  xcb_destroy_window(connection, sender);
  xcb_flush(connection);
}

/// Asks the window manager for the focus by the time of the user's action. The toolkit asks by the
/// last one in a window of its own, which is older than what the user did elsewhere since.
void activate(xcb_connection_t* connection, xcb_window_t window, std::uint32_t time) {
  constexpr std::uint32_t byApplication = 1;
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = window;
  message.type = X11::atom("_NET_ACTIVE_WINDOW");
  message.data.data32[0] = byApplication;
  message.data.data32[1] = time;
  xcb_send_event(connection, 0, rootWindow(connection),
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&message));
  xcb_flush(connection);
}

/// A property of one number; none where it isn't there.
std::optional<std::uint32_t> number(xcb_connection_t* connection, xcb_window_t window,
                                    const char* property) {
  const auto cookie =
      xcb_get_property(connection, 0, window, X11::atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
  const auto reply = X11::owned(xcb_get_property_reply(connection, cookie, nullptr));
  if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) != 4)
    return std::nullopt;
  return *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
}

}  // namespace

ActivationToken ActivationToken::fromEnvironment() {
  return {qEnvironmentVariable("XDG_ACTIVATION_TOKEN"), qEnvironmentVariable("DESKTOP_STARTUP_ID")};
}

ActivationToken ActivationToken::fromPlatformData(const QVariantMap& data) {
  return {data.value(tokenKey).toString(), data.value(startupIDKey).toString()};
}

QVariantMap ActivationToken::platformData() const {
  QVariantMap data;
  if (!token.isEmpty()) data[tokenKey] = token;
  if (!startupID.isEmpty()) data[startupIDKey] = startupID;
  return data;
}

QString startupIDForRequest() {
  static int count = 0;
  xcb_connection_t* connection = X11::connection();
  const QWindow* window = QGuiApplication::focusWindow();
  if (connection == nullptr || window == nullptr) return {};
  const auto shown = static_cast<xcb_window_t>(window->winId());
  // The toolkit may keep the time of the last input on a window of its own.
  const auto keeper = number(connection, shown, "_NET_WM_USER_TIME_WINDOW").value_or(shown);
  const auto time = number(connection, keeper, "_NET_WM_USER_TIME");
  if (!time) return {};
  return QStringLiteral("tidemar-%1-%2_TIME%3")
      .arg(QCoreApplication::applicationPid())
      .arg(++count)
      .arg(*time);
}

void accept(const ActivationToken& token) {
  // On Wayland the toolkit looks there for it when a window asks for the focus.
  if (!token.token.isEmpty() &&
      QGuiApplication::platformName().startsWith(QStringLiteral("wayland")))
    qputenv("XDG_ACTIVATION_TOKEN", token.token.toUtf8());
  if (token.startupID.isEmpty() || token.startupID.size() > longestID) return;
  pendingTime = timeOf(token.startupID);
  if (xcb_connection_t* connection = X11::connection())
    endStartup(connection, token.startupID.toStdString());
}

void bringForward(QWidget& window) {
  window.show();
  window.raise();
  window.activateWindow();
  const std::optional<std::uint32_t> time = std::exchange(pendingTime, std::nullopt);
  xcb_connection_t* connection = X11::connection();
  if (time && connection != nullptr)
    activate(connection, static_cast<xcb_window_t>(window.winId()), *time);
}

}  // namespace tidemar
