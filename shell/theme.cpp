#include "shell/theme.h"

QString mainStyleSheet()
{
    // One rule a line, in the order that decides between equally specific ones.
    // clang-format off
    return QStringLiteral(R"css(
QWidget#root { background: #0b1020; color: #e8eefc; font-family: Segoe UI; }
QFrame#titleBar { background: #0e1324; border-bottom: 1px solid #26324a; }
QLabel#titleBarText { color: #e8eefc; font-size: 12px; font-weight: 600; }
QPushButton#windowButton { background: transparent; color: #d8e1f5; border: 0; min-width: 36px; min-height: 28px; font-size: 14px; }
QPushButton#windowButton:hover { background: #182235; }
QPushButton#windowButtonClose { background: transparent; color: #d8e1f5; border: 0; min-width: 36px; min-height: 28px; font-size: 16px; }
QPushButton#windowButtonClose:hover { background: #dc2626; color: white; }
QFrame#sidebar { background: #101827; border-right: 1px solid #1f2937; }
QLabel#logoImage, QLabel#logoWordmark { background: transparent; border: 0; }
QLabel#brand { color: #f4f7ff; font-size: 14px; font-weight: 600; }
QLabel#brandSub { color: #b6c2e2; font-size: 12px; }
QLabel#sidebarFoot { color: #6f7894; font-size: 12px; }
QPushButton[class="nav"] { text-align: left; padding: 0 18px; height: 44px; border: 0; border-radius: 7px; color: #b6c2e2; background: transparent; font-size: 14px; }
QPushButton[class="nav"]:checked { background: #15a34a; color: white; }
QPushButton[class="nav"]:hover:!checked { background: #182235; }
QWidget#page { background: #0b1020; }
QScrollArea#settingsScroll { background: #0b1020; border: 0; }
QScrollArea#settingsScroll > QWidget > QWidget { background: #0b1020; }
QScrollArea#infoScroll { background: #090d19; border: 1px solid #26324a; border-radius: 6px; }
QScrollArea#infoScroll > QWidget > QWidget { background: #090d19; }
QLabel#title { color: #f4f7ff; font-size: 30px; font-weight: 650; }
QLabel#subtitle { color: #9aa7c7; font-size: 14px; }
QLabel#panelTitle { color: #f4f7ff; font-size: 14px; font-weight: 600; }
QLabel#metricLabel { color: #9aa7c7; font-size: 12px; }
QLabel#metricValue { color: #f4f7ff; font-size: 26px; font-weight: 650; }
QFrame#panel { background: #0e1324; border: 1px solid #26324a; border-radius: 14px; }
QFrame#hero { background: #11182b; border: 1px solid #33415f; border-radius: 14px; }
QFrame#badge { background: #17152d; border: 1px solid #3d2f69; border-radius: 16px; }
QLabel#badgeText { color: #d8b4fe; font-size: 12px; }
QFrame#toast { background: #101a33; border: 1px solid #4f7cff; border-radius: 10px; }
QLabel#toastText { color: #f4f7ff; font-size: 12px; font-weight: 600; }
QLabel#heroLabel { color: #ff9f8a; font-size: 13px; }
QLabel#heroValue { color: #f4f7ff; font-size: 25px; font-weight: 650; }
QLabel#heroImage { border-radius: 12px; background: #090d19; }
QLabel#alertTitle { color: #ff9f8a; font-size: 15px; font-weight: 600; }
QLabel#alertBody { color: #b6c2e2; font-size: 12px; }
QLabel#appName { color: #f4f7ff; font-size: 14px; font-weight: 600; }
QLabel#appMeta { color: #9aa7c7; font-size: 12px; }
QLabel#appScore { color: #5eead4; font-size: 18px; font-weight: 700; }
QFrame#appRow { background: #10162a; border: 1px solid #25324e; border-radius: 10px; }
QTableWidget { background: #0e1324; color: #e8eefc; gridline-color: #26324a; border: 1px solid #26324a; selection-background-color: #2563eb; selection-color: white; alternate-background-color: #11182b; font-size: 12px; }
QTableWidget::item { padding: 4px 6px; }
QHeaderView::section { background: #11182b; color: #c7d2fe; border: 0; border-right: 1px solid #26324a; border-bottom: 1px solid #26324a; padding: 6px; font-weight: 600; }
QFrame#classicPanel { background: #0e1324; border: 1px solid #26324a; }
QFrame#classicTop { background: #0e1324; border-bottom: 1px solid #26324a; }
QLabel#classicTitle { color: #22c55e; font-size: 15px; font-weight: 700; }
QLabel#classicText { color: #d8e1f5; font-size: 12px; }
QLabel#classicBlue { color: #60a5fa; font-size: 13px; font-weight: 600; }
QMenuBar { background: #0e1324; color: #d8e1f5; padding: 0; border: 0; }
QMenuBar::item { background: transparent; padding: 5px 8px; }
QMenuBar::item:selected { background: #182235; }
QMenu { background: #0e1324; color: #e8eefc; border: 1px solid #26324a; }
QMenu::item { padding: 6px 24px; }
QMenu::item:selected { background: #2563eb; color: white; }
QPushButton#classicTab { background: #11182b; color: #d8e1f5; border: 1px solid #26324a; border-radius: 0; padding: 6px 10px; }
QPushButton#classicTab:checked { background: #15a34a; color: white; border-color: #15a34a; }
QPushButton#quickFilter { background: #0e1324; color: #b6c2e2; border: 1px solid #26324a; border-radius: 14px; padding: 5px 12px; font-size: 12px; }
QPushButton#quickFilter:checked { background: #2563eb; color: white; border-color: #60a5fa; }
QPushButton#quickFilter:hover:!checked { background: #182235; color: #e8eefc; }
QProgressBar { background: #090d19; border: 0; border-radius: 4px; height: 8px; text-align: center; color: transparent; }
QProgressBar::chunk { background: #4f7cff; border-radius: 4px; }
QLineEdit { background: #090d19; border: 1px solid #26324a; border-radius: 8px; color: #f4f7ff; padding: 7px 10px; min-height: 20px; selection-background-color: #4f7cff; }
QComboBox { background: #090d19; border: 1px solid #26324a; border-radius: 8px; color: #f4f7ff; padding: 7px 10px; min-height: 20px; }
QCheckBox { color: #dbe7ff; spacing: 8px; }
QCheckBox::indicator { width: 16px; height: 16px; }
QPushButton#save { background: #4f7cff; color: white; border: 0; border-radius: 8px; height: 40px; font-weight: 600; }
QPushButton#save:hover { background: #6b8dff; }
QPushButton#actionButton { background: #11182b; color: #e8eefc; border: 1px solid #33415f; border-radius: 4px; padding: 5px 10px; }
QPushButton#actionButton:hover { background: #182235; border-color:#4f7cff; }
QLineEdit#search { background: #090d19; color: #e8eefc; border: 1px solid #33415f; border-radius: 4px; padding: 5px 8px; min-width: 180px; }
QLineEdit#search[active="true"] { border: 2px solid #4f7cff; background: #10182c; }
QFrame#summaryBlue { background: #101a33; border: 1px solid #33415f; border-radius: 10px; }
QFrame#summaryViolet { background: #1b1535; border: 1px solid #4c2f76; border-radius: 10px; }
QFrame#summaryCoral { background: #32171a; border: 1px solid #7d3339; border-radius: 10px; }
)css");
    // clang-format on
}

QString miniStyleSheet()
{
    // clang-format off
    return QStringLiteral(R"css(
QFrame#miniShell { background: #0e1324; border: 1px solid #33415f; border-radius: 14px; }
QLabel#miniTitle { color: #e8eefc; font-size: 12px; font-weight: 700; }
QLabel#miniRate { color: #80f8ff; font-size: 15px; font-weight: 700; }
)css");
    // clang-format on
}

QPalette toolTipPalette()
{
    QPalette palette;
    palette.setColor(QPalette::ToolTipBase, QColor(0x10, 0x1a, 0x33));
    palette.setColor(QPalette::ToolTipText, QColor(0xf4, 0xf7, 0xff));
    return palette;
}
