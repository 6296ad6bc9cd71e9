#include "tests/rules/rulespagefixture.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

void RulesPageFixture::prepare()
{
    // What the toolkit says when it loses track of an editor or an index.
    QTest::failOnWarning(QRegularExpression(u"^edit: |^Q(Abstract|Table|Line|Model)"_s));
    fixture = std::make_unique<WindowFixture>();
    // A slow machine's ticks would come between an edit and the look at what it made.
    WindowFixture::store(u"refreshIntervalMs"_s, 10000);
    for (quint32 pid = 1; pid <= 5; ++pid)
        fixture->system().addProcess(pid, u"app%1"_s.arg(pid), 1);
    fixture->open();
    fixture->tick();
    WindowFixture::click(fixture->button(u"\u2263    Rules"_s));
    table = fixture->rulesTable();
    QVERIFY(QTest::qWaitForWindowActive(&fixture->window()));
    QCOMPARE(table->rowCount(), 5);
}

QString RulesPageFixture::cell(const QString &application, int column) const
{
    return table->item(WindowFixture::rowOf(table, application), column)->text();
}

QStringList RulesPageFixture::checked(int column) const
{
    QStringList applications;
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->item(row, column)->checkState() == Qt::Checked)
            applications.append(table->item(row, Application)->text());
    }
    return applications;
}

void RulesPageFixture::clickCheckBox(const QString &application, int column)
{
    WindowFixture::clickCheckBox(table, WindowFixture::rowOf(table, application), column);
}
