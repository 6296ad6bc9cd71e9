#include "tests/settings/controlcenterfixture.h"

#include <QComboBox>
#include <QScrollArea>

using namespace Qt::StringLiterals;

void ControlCenterFixture::open()
{
    m_fixture->open();
    const auto buttons = m_fixture->window().findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->property("class") == u"nav"_s && button->text().endsWith(u"Settings"_s))
            WindowFixture::click(button);
    }
    QVERIFY(m_fixture->find<QScrollArea>("settingsScroll")->isVisible());
}

void ControlCenterFixture::type(const QString &label, const QString &text)
{
    auto *edit = m_fixture->setting<QLineEdit>(label);
    edit->selectAll();
    edit->insert(text);
}

void ControlCenterFixture::choose(const QString &label, const QString &text)
{
    auto *box = m_fixture->setting<QComboBox>(label);
    QTest::keyClick(box, text.front().toLatin1());
    QCOMPARE(box->currentText(), text);
}

void ControlCenterFixture::check(const QString &label, bool checked)
{
    auto *box = m_fixture->setting<QCheckBox>(label);
    if (box->isChecked() != checked)
        WindowFixture::click(box);
    QCOMPARE(box->isChecked(), checked);
}
