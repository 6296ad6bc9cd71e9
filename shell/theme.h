#pragma once

#include <QPalette>
#include <QString>

/// Style sheet of the main window: dark and flat, keyed on object names. Constant for the whole
/// run; where two rules match one widget at equal specificity the later one wins.
QString mainStyleSheet();

/// Style sheet of the mini monitor.
QString miniStyleSheet();

/// Colours of tool tips, which no sheet reaches: those of a toast.
QPalette toolTipPalette();
