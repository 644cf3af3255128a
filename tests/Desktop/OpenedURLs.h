#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace tidemar::testing {

/// Takes the URLs of one scheme that the program opens, in place of the desktop.
class OpenedURLs : public QObject {
  Q_OBJECT
 public:
  explicit OpenedURLs(const char* scheme) : _scheme(QString::fromLatin1(scheme)) {
    QDesktopServices::setUrlHandler(_scheme, this, "open");
  }
  ~OpenedURLs() override { QDesktopServices::unsetUrlHandler(_scheme); }

  QStringList urls;  ///< Percent-encoded.

 public slots:
  void open(const QUrl& url) { urls << QString::fromLatin1(url.toEncoded()); }

 private:
  QString _scheme;
};

}  // namespace tidemar::testing
