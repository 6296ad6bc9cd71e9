#pragma once

#include "app/lumetrawindow.h"
#include "tests/support/patience.h"
#include "tests/support/scriptedsystem.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

#include <memory>

/// The real main window on scripted answers and a settings store of its own, driven as a user
/// drives it. Construct one fixture a test function: the store starts empty unless it is seeded.
class WindowFixture
{
public:
    /// Empties the store and resets the scripted system. The window is not there before open().
    WindowFixture();
    /// Closes the window and deletes the mini monitor, which the window leaves to the process.
    ~WindowFixture();

    /// Constructs and shows the window and waits until it is exposed.
    void open();
    /// Ends the window as the process's end does, keeping the store, so that open() starts anew.
    void close();
    /// Lets the sampling timer fire once, now.
    void tick();

    LumetraWindow &window() { return *m_window; }
    ScriptedSystem &system() { return ScriptedSystem::instance(); }

    /// The widget of this type and object name; fails the test when there is none.
    template <typename T> T *find(const char *objectName)
    {
        auto *widget = m_window->findChild<T *>(QString::fromLatin1(objectName));
        if (!widget)
            qFatal("no widget named \"%s\"", objectName);
        return widget;
    }
    /// The button, label or check box that shows this text; fails the test when there is none.
    template <typename T> T *findText(const QString &text)
    {
        const auto widgets = m_window->findChildren<T *>();
        for (T *widget : widgets) {
            if (widget->text() == text)
                return widget;
        }
        qFatal("no widget reads \"%s\"", qPrintable(text));
    }
    QAbstractButton *button(const QString &text) { return findText<QAbstractButton>(text); }
    /// The quick filter of this text; other pages have buttons that read the same.
    QAbstractButton *quickFilter(const QString &text);
    /// The label whose text begins so; fails the test when there is none.
    QLabel *labelStarting(const QString &start);
    /// The menu entry of this text, in the menu bar; fails the test when there is none.
    QAction *menuAction(const QString &text);

    QTableWidget *appsTable(); ///< told by its first header, "Name"
    QTableWidget *rulesTable(); ///< told by its first header, "Application"
    /// Row whose first cell reads so, trimmed; -1 when there is none.
    static int rowOf(const QTableWidget *table, const QString &name);
    /// Texts of one row.
    static QStringList rowTexts(const QTableWidget *table, int row);

    /// Clicks as a user does: a check box on its box, any other widget in its middle.
    static void click(QWidget *widget);
    /// Clicks the check box of a cell.
    static void clickCheckBox(QTableWidget *table, int row, int column);
    /// Middle of a cell's check box as it is painted, in the viewport; fails the test where none
    /// is.
    static QPoint checkBoxCentre(const QTableWidget *table, int row, int column);

    /// The control that stands beside this label, or the check box of this text, in the Control
    /// Center; fails the test when there is none of this type.
    template <typename T> T *setting(const QString &label)
    {
        auto *control = qobject_cast<T *>(settingControl(label));
        if (!control)
            qFatal("no such control for \"%s\"", qPrintable(label));
        return control;
    }
    /// Text of the toast that is shown; empty when none is.
    QString toast();

    /// Path of the settings store's file, where it is one.
    static QString storePath();
    /// Writes one value to the store before the window reads it.
    static void store(const QString &key, const QVariant &value);
    /// Reads one value from the store; invalid when it is not there.
    static QVariant stored(const QString &key);

private:
    QWidget *settingControl(const QString &label);

    std::unique_ptr<LumetraWindow> m_window;
};

/// The timer whose timeouts are the window's ticks; fails the test when there is none.
QTimer *sampleTimer(const LumetraWindow &window);

/// The window's mini monitor, shown or not; fails the test when there is none.
MiniSpeedWidget *miniMonitor();

/// Prepares the test process: names as the program's, a settings store of its own.
void prepareTestProcess();

/// Runs the class on the window: prepares the process before anything reads the settings.
#define TOVAN_WINDOW_TEST(name, TestObject)                                                        \
    int name(int argc, char *argv[])                                                               \
    {                                                                                              \
        prepareTestProcess();                                                                      \
        const QApplication app(argc, argv);                                                        \
        TestObject test;                                                                           \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
