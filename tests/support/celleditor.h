#pragma once

#include "tests/support/patience.h"

#include <QLineEdit>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

/// The editor that is open in a table, or null. A closed one may still wait for its deletion.
inline QLineEdit *openEditor(const QTableWidget *table)
{
    const auto editors = table->viewport()->findChildren<QLineEdit *>();
    for (QLineEdit *editor : editors) {
        if (editor->isVisibleTo(table))
            return editor;
    }
    return nullptr;
}

/// Opens a cell's editor as a user does, by a click on the right part of the cell, which is free of
/// a check box. Returns the editor; the toolkit lets one wait that may become a double click.
inline QLineEdit *clickIntoCell(QTableWidget *table, int row, int column)
{
    // A press that comes before the event loop has been idle counts as what closed the last editor.
    QTimer idle;
    idle.setSingleShot(true);
    idle.start(0);
    if (!QTest::qWaitFor([&idle] { return !idle.isActive(); }, patience))
        qFatal("the event loop is never idle");
    const QRect cell = table->visualItemRect(table->item(row, column));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      cell.center() + QPoint(cell.width() / 3, 0));
    if (!QTest::qWaitFor([table] { return openEditor(table) != nullptr; }, patience))
        qFatal("a click opened no editor in row %d, column %d", row, column);
    return openEditor(table);
}

/// Replaces an editor's text key by key.
inline void retype(QLineEdit *editor, const QString &text)
{
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(editor, text);
}
