#include "app/lumetrawindow.h"
#include "settings/userstore.h"
#include "shell/activation.h"
#include "shell/basestyle.h"
#include "shell/privilegedstart.h"
#include "shell/runningprocess.h"

#include <QApplication>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    guardPrivilegedStart(argc, argv);
    const auto process = becomeRunningProcess(storeName(), activationOfThisStart());
    if (!process)
        return 0;

    chooseBaseStyle();
    const QApplication application(argc, argv);
    // The two names together select the settings store.
    QCoreApplication::setApplicationName(u"Tovan Network Monitor"_s);
    QCoreApplication::setOrganizationName(u"Tovan"_s);

    LumetraWindow window;
    window.show();
    process->answerWith([&window](const QByteArray &activation) { window.openWindow(activation); });
    return QApplication::exec();
}
