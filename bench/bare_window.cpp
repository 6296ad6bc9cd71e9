// The least that a program of this kind can be: a bare window of the same size, in one colour.
#include <QApplication>
#include <QMainWindow>
#include <QPalette>

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    window.resize(1180, 800);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x10, 0x18, 0x27));
    window.setPalette(palette);
    window.show();
    return QApplication::exec();
}
