#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>
#include <optional>

namespace tidemar {

/// Tells whether the panel is dark in which an icon of the XEmbed protocol stands: there the icon
/// is a window of ours, which nobody colours to suit the panel. The answer is taken from the
/// screen, above and below the picture. Main thread.
class PanelGround : public QObject {
  Q_OBJECT
 public:
  /// Follows an icon that is shown already and outlives this. Where it isn't embedded, nothing is
  /// ever told.
  explicit PanelGround(const QSystemTrayIcon& icon);

  bool isEmbedded() const noexcept { return _isEmbedded; }

 signals:
  /// The answer as soon as the icon stands in its panel, and every other one after it.
  void told(bool isDark);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void look();

  const QSystemTrayIcon& _icon;
  bool _isEmbedded = false;
  QTimer _pause{this};
  std::optional<bool> _isDark;
};

/// Whether the top and the bottom line of a picture are dark in the mean; none for no picture.
std::optional<bool> isGroundDark(const QImage& picture);

}  // namespace tidemar
