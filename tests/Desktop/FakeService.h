#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <functional>
#include <utility>
#include <vector>

namespace tidemar::testing {

/// Owns a name of the bus on a connection of its own, as long as it lives, and answers the calls of
/// one object and those below it. It writes them down.
class FakeService : public QDBusVirtualObject {
 public:
  /// The reply to a call; one of no type for silence.
  using Answer = std::function<QDBusMessage(const QDBusMessage&)>;

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
    const QDBusMessage reply = _answer(message);
    return reply.type() == QDBusMessage::InvalidMessage || bus.send(reply);
  }
  QString introspect(const QString&) const override { return {}; }

 private:
  QDBusConnection _bus;
  QString _name;
  Answer _answer;
};

}  // namespace tidemar::testing
