#include "shell/basestyle.h"

#include <QApplication>

using namespace Qt::StringLiterals;

// The system's style draws dotted frames around buttons that have the keyboard, and takes room of
// its own for rows and labels whose heights are given.
void chooseBaseStyle()
{
    QApplication::setStyle(u"Fusion"_s);
}
