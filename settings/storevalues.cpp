#include "settings/storevalues.h"

#include <utility>

// QVariant::toInt() would cut a number that is too large for an int down to its low bits.
int storedInt(const QVariant &value)
{
    const qlonglong number = value.toLongLong();
    return std::in_range<int>(number) ? static_cast<int>(number) : 0;
}

QString storedText(const QVariant &value)
{
    constexpr qsizetype longestText = 32767;
    QString text = value.toString();
    if (text.size() > longestText)
        text.truncate(longestText - (text.at(longestText - 1).isHighSurrogate() ? 1 : 0));
    return text.isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
}

// The toolkit drops the first of a text's byte order marks, and of bytes that are read as a text
// too.
QVariant toStored(const QVariant &value)
{
    if (value.typeId() != QMetaType::QString)
        return value;
    const QString text = value.toString();
    return text.startsWith(QChar::ByteOrderMark) ? (QChar(QChar::ByteOrderMark) + text).toUtf8()
                                                 : value;
}
