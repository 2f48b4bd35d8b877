// What any program with a window and an icon in the tray costs: an empty window of the panel's size, an icon
// of one colour, and nothing else. bench/panel measures beside it.

#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QWidget>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QPixmap square(22, 22);
    square.fill(Qt::darkCyan);
    QSystemTrayIcon icon{QIcon(square)};
    icon.show();
    QApplication::setQuitOnLastWindowClosed(false);
    QWidget window;
    window.setFixedSize(360, 480);
    window.show();
    return QApplication::exec();
}
