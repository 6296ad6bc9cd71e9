#pragma once

#include "tests/support/teststore.h"
#include "tests/support/windowfixture.h"

#include <memory>

/// The Control Center of the real window, edited and applied as a user does. A test calls
/// `prepare()` before and `clear()` after each of its functions.
class ControlCenterFixture
{
protected:
    void prepare() { m_fixture = std::make_unique<WindowFixture>(); }
    void clear() { m_fixture.reset(); }

    /// Opens the window on the Control Center.
    void open();
    /// Replaces the text of the field beside this label.
    void type(const QString &label, const QString &text);
    /// Text of the field beside this label.
    QString shown(const QString &label) { return m_fixture->setting<QLineEdit>(label)->text(); }
    /// Chooses an entry of the box beside this label, by the key of its first letter.
    void choose(const QString &label, const QString &text);
    /// Clicks the check box of this text if it is not as wanted.
    void check(const QString &label, bool checked);
    void apply() { WindowFixture::click(m_fixture->button(QStringLiteral("Apply changes"))); }
    /// Whether anything was saved since forgetSaves().
    static bool wasSaved() { return storeExists(); }
    static void forgetSaves() { removeStore(); }

    std::unique_ptr<WindowFixture> m_fixture;
};
