#include "app/lumetrawindow.h"

#include <QApplication>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    // The two names together select the settings store.
    QCoreApplication::setApplicationName(u"Tovan Network Monitor"_s);
    QCoreApplication::setOrganizationName(u"Tovan"_s);

    LumetraWindow window;
    window.show();
    return QApplication::exec();
}
