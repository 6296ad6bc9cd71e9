#pragma once

#include <QString>

class QLabel;
class QPushButton;

/// A label with the object name that the sheet styles it by. It shows its text to the letter: names
/// of programs may look like mark-up. The caller owns it until it is put into a layout.
QLabel *makeLabel(const QString &text, const QString &objectName);

/// A button that the sheet styles as "actionButton"; owned as a label is.
QPushButton *makeActionButton(const QString &text);
