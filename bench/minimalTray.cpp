// The least that a program with a tray icon costs: the peer of the real one's start and memory.

#include <QApplication>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QPixmap picture(22, 22);
  picture.fill(Qt::darkGray);
  QSystemTrayIcon icon{QIcon(picture)};
  icon.show();
  return QApplication::exec();
}
