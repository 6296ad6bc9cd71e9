#pragma once

#include "tests/support/windowfixture.h"

#include <memory>

/// The real window with four applications, "app1" to "app4", in both of its tables. A test calls
/// `prepare()` before and `clear()` after each of its functions.
class BothTablesFixture
{
protected:
    void prepare()
    {
        fixture = std::make_unique<WindowFixture>();
        // A slow machine's ticks would come between a click and the look at what it did.
        WindowFixture::store(QStringLiteral("refreshIntervalMs"), 10000);
        for (quint32 pid = 1; pid <= 4; ++pid)
            fixture->system().addProcess(pid, QStringLiteral("app%1").arg(pid), 1);
        fixture->open();
        QVERIFY(QTest::qWaitForWindowActive(&fixture->window()));
        fixture->tick();
        apps = fixture->appsTable();
        rules = fixture->rulesTable();
    }
    void clear() { fixture.reset(); }

    /// The label with the toast's text, shown or not.
    QLabel *toast() { return fixture->find<QLabel>("toastText"); }

    std::unique_ptr<WindowFixture> fixture;
    QTableWidget *apps = nullptr;
    QTableWidget *rules = nullptr;
};
