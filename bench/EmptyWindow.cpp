// The least a Qt program can show: an empty window of the wizard's size and place, which start-up is measured against.
#include <QApplication>
#include <QScreen>
#include <QWidget>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(720, 480);
    window.move(QGuiApplication::primaryScreen()->geometry().center() - window.rect().center());
    window.show();
    return QApplication::exec();
}
