#pragma once

#include <QString>

// What the sources of Qt 5's SVG module name and Qt 6 has no more. The compiler reads this before
// each of them.

/// A part of a text that somebody else keeps. Other than Qt 5's it does not know that text: it
/// begins where its string() does.
class QStringRef : public QStringView
{
public:
    QStringRef() = default;
    QStringRef(QStringView part) : QStringView(part) { }
    QStringRef(const QString &text) : QStringView(text) { }
    explicit QStringRef(const QString *text) : QStringView(*text) { }
    QStringRef(const QString *text, qsizetype position, qsizetype length)
        : QStringView(text->constData() + position, length)
    {
    }
    QStringRef(const QChar *text, qsizetype position, qsizetype length)
        : QStringView(text + position, length)
    {
    }

    const QChar *string() const { return data(); }
    qsizetype position() const { return 0; }
    const QChar *unicode() const { return data(); }
};

/// The same kept beyond the text that it is a part of.
class QXmlStreamStringRef : public QString
{
public:
    QXmlStreamStringRef() = default;
    explicit QXmlStreamStringRef(QStringRef part) : QString(part.toString()) { }
};
