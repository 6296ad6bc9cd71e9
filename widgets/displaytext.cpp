#include "widgets/displaytext.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

bool endsLine(QChar c)
{
    return c.category() == QChar::Other_Control || c == QChar::LineSeparator
        || c == QChar::ParagraphSeparator;
}

/// Whether the character embeds, overrides or isolates what follows it (Unicode Standard Annex 9).
bool overridesOrder(QChar c)
{
    return (c >= u'\u202a' && c <= u'\u202e') || (c >= u'\u2066' && c <= u'\u2069');
}

} // namespace

QString inOneLine(const QString &text)
{
    QString line = text;
    std::ranges::replace_if(line, endsLine, QChar(QChar::Space));
    return line;
}

QString displayedName(const QString &name)
{
    const auto isShownAsItIs = [](QChar c) { return !endsLine(c) && !overridesOrder(c); };
    if (std::ranges::all_of(name, isShownAsItIs))
        return name;
    QString shown;
    const QString line = inOneLine(name);
    for (const QChar c : line) {
        if (overridesOrder(c))
            shown += "<U+"_L1 + QString::number(c.unicode(), 16).toUpper() + u'>';
        else
            shown += c;
    }
    return shown;
}
