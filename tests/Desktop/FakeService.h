#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace tidemar::testing {

/// Owns a name of the bus on a connection of its own, as long as it lives, and answers the calls of
/// one object and those below it. It writes them down.
class FakeService : public QDBusVirtualObject {
 public:
  /// Answers a call; none for an error.
  using Answer = std::function<std::optional<QVariantList>(const QDBusMessage&)>;

  FakeService(QDBusConnection bus, QString name, const QString& path, Answer answer)
      : _bus(std::move(bus)), _name(std::move(name)), _answer(std::move(answer)) {
    _bus.registerVirtualObject(path, this, QDBusConnection::SubPath);
    _bus.registerService(_name);
  }
  ~FakeService() override { leave(); }

  std::vector<QDBusMessage> calls;

  void send(const QString& path, const QString& interface, const QString& signal,
            const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createSignal(path, interface, signal);
    message.setArguments(arguments);
    _bus.send(message);
  }

  /// Gives the name up, as a service does that ends.
  void leave() { _bus.unregisterService(_name); }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    calls.push_back(message);
    const auto answer = _answer(message);
    return bus.send(answer ? message.createReply(*answer)
                           : message.createErrorReply(QStringLiteral("org.example.Refused"),
                                                      QStringLiteral("Not today.")));
  }
  QString introspect(const QString&) const override { return {}; }

 private:
  QDBusConnection _bus;
  QString _name;
  Answer _answer;
};

}  // namespace tidemar::testing
