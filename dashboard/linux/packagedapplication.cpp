#include "dashboard/linux/packagedapplication.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

/// Undoes systemd's writing of other characters as \xhh in the name of a unit.
QString unescaped(QString text)
{
    static const QRegularExpression escape(uR"(\\x([0-9a-f]{2}))"_s);
    QRegularExpressionMatch match = escape.match(text);
    while (match.hasMatch()) {
        const QChar character(match.captured(1).toUShort(nullptr, 16));
        text.replace(match.capturedStart(), match.capturedLength(), character);
        match = escape.match(text, match.capturedStart() + 1);
    }
    return text;
}

} // namespace

QStringList packagedApplicationIds(const QString &cgroups)
{
    // app-flatpak-org.example.App-1234.scope, without "app-" in older versions
    static const QRegularExpression flatpak(uR"(/(?:app-)?flatpak-([^/]+)-\d+\.scope)"_s);
    if (const auto match = flatpak.match(cgroups); match.hasMatch())
        return {unescaped(match.captured(1))};

    // snap.NAME.APP-UUID.scope, snap.NAME.APP.UUID.scope or snap.NAME.SERVICE.service
    static const QRegularExpression snap(
        uR"(/snap\.([a-z0-9_-]+)\.([A-Za-z0-9-]+?)(?:[.-][0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12})?\.(?:scope|service))"_s);
    if (const auto match = snap.match(unescaped(cgroups)); match.hasMatch()) {
        // The second installation of a snap is NAME_KEY, which its entries write as NAME+KEY.
        const QString name = match.captured(1).replace(u'_', u'+');
        return {name + u'_' + match.captured(2),
                name + u'_' + match.captured(1).section(u'_', 0, 0)};
    }
    return {};
}
