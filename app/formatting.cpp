#include "app/formatting.h"

#include <array>

using namespace Qt::StringLiterals;

QString formatBytes(quint64 bytes)
{
    static constexpr std::array units{u"B", u"KB", u"MB", u"GB", u"TB"};

    if (bytes < 1024)
        return u"%1 %2"_s.arg(bytes).arg(QStringView(units.front()));

    auto value = static_cast<double>(bytes);
    std::size_t unit = 0;
    while (value >= 1024.0 && unit + 1 < units.size()) {
        value /= 1024.0;
        ++unit;
    }
    return u"%1 %2"_s.arg(value, 0, 'f', 1).arg(QStringView(units.at(unit)));
}

QString formatRate(quint64 bytesPerTick)
{
    return formatBytes(bytesPerTick) + "/s"_L1;
}

QString formatLimit(int kbps)
{
    return u"%1 KB/s"_s.arg(kbps);
}
