#pragma once

#include <string>

namespace tidemar {

/// Tells the user one thing and waits until it was read. Main thread; the event loop goes on
/// meanwhile.
class Alerts {
 public:
  enum class Style { warning, critical };

  struct Alert {
    Style style = Style::warning;
    std::string message;      ///< One line, UTF-8, shown as plain text.
    std::string information;  ///< What follows below it, UTF-8, shown as plain text.
    std::string button = "OK";
  };

  virtual ~Alerts() = default;
  virtual void run(const Alert& alert) = 0;
};

}  // namespace tidemar
