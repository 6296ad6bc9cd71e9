#pragma once

#include "tests/support/celleditor.h"
#include "tests/support/windowfixture.h"

#include <memory>

/// The Rules Manager of the real window with five applications, "app1" to "app5". A test calls
/// `prepare()` before and `clear()` after each of its functions.
class RulesPageFixture
{
protected:
    enum Column { Application, Priority, Dl, Ul, Block, DlKbps, UlKbps, Sockets };

    void prepare();
    void clear() { fixture.reset(); }

    /// Text of a cell in that application's row.
    QString cell(const QString &application, int column) const;
    /// Applications whose box in this column is checked.
    QStringList checked(int column) const;
    void clickCheckBox(const QString &application, int column);

    std::unique_ptr<WindowFixture> fixture;
    QTableWidget *table = nullptr;
};
