#pragma once

#include <QString>

/// Names of applications are those of files: they may hold everything but a slash and a NUL. They
/// are kept and compared as they are; these functions say how they are shown, the same in every
/// view.

/// The text in one line: control characters and separators of lines and paragraphs are blanks.
QString inOneLine(const QString &text);

/// A name as every view shows it: in one line, with nothing in it that makes it read as another
/// one. What would override the order of its characters (U+202A to U+202E, U+2066 to U+2069) is
/// written out, as "<U+202E>".
QString displayedName(const QString &name);
