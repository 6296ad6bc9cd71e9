#pragma once

#include <QFile>
#include <QStringList>

/// What to start dbus-daemon with for a session bus of a test's own, which prints its address:
/// nobody is on it but those whom the test brings. The machine's session bus would start the
/// services that are installed. Its configuration is written to that file.
inline QStringList sessionBusArguments(const QString &configuration)
{
    QFile file(configuration);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("%s cannot be written", qPrintable(configuration));
    file.write(R"(<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)");
    return {QStringLiteral("--config-file=") + configuration, QStringLiteral("--nofork"),
            QStringLiteral("--print-address")};
}
