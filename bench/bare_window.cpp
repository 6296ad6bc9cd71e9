// The least that a program of this kind can be: a bare window of the same size, in one colour. With
// an argument it shows that text, and so has to know the fonts.
#include <QApplication>
#include <QLabel>
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
    if (const QStringList arguments = QApplication::arguments(); arguments.size() > 1)
        window.setCentralWidget(new QLabel(arguments.at(1)));
    window.show();
    return QApplication::exec();
}
