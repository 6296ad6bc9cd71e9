#include "tests/desktop/support/ownedprocess.h"

#include <csignal>
#include <sys/prctl.h>

OwnedProcess::OwnedProcess()
{
    setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    setStandardErrorFile(nullDevice());
}

OwnedProcess::~OwnedProcess()
{
    end();
}

QByteArray OwnedProcess::startAndReadLine(const QString &program, const QStringList &arguments)
{
    start(program, arguments);
    while (!canReadLine()) {
        if (!waitForReadyRead(20000))
            qFatal("%s does not answer", qPrintable(program));
    }
    return readLine().trimmed();
}

void OwnedProcess::end()
{
    if (state() == NotRunning)
        return;
    terminate();
    if (!waitForFinished(10000)) {
        kill();
        waitForFinished();
    }
}
