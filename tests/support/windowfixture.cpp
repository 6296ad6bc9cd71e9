#include "tests/support/windowfixture.h"

#include "shell/minispeedwidget.h"
#include "tests/support/paintedcheckbox.h"
#include "tests/support/teststore.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QMenuBar>
#include <QScrollArea>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace {

QTableWidget *tableWithFirstHeader(const QMainWindow &window, const QString &header)
{
    const auto tables = window.findChildren<QTableWidget *>();
    for (QTableWidget *table : tables) {
        const auto *item = table->horizontalHeaderItem(0);
        if (item && item->text() == header)
            return table;
    }
    qFatal("no table whose first column is \"%s\"", qPrintable(header));
}

QAction *findAction(const QList<QAction *> &actions, const QString &text)
{
    for (QAction *action : actions) {
        if (action->text() == text)
            return action;
        if (action->menu()) {
            if (QAction *found = findAction(action->menu()->actions(), text))
                return found;
        }
    }
    return nullptr;
}

} // namespace

QTimer *sampleTimer(const LumetraWindow &window)
{
    const auto timers = window.findChildren<QTimer *>(Qt::FindDirectChildrenOnly);
    for (QTimer *timer : timers) {
        if (!timer->isSingleShot())
            return timer;
    }
    qFatal("the window has no sampling timer");
}

MiniSpeedWidget *miniMonitor()
{
    const auto topLevels = QApplication::topLevelWidgets();
    for (QWidget *widget : topLevels) {
        if (auto *mini = dynamic_cast<MiniSpeedWidget *>(widget))
            return mini;
    }
    qFatal("there is no mini monitor");
}

void prepareTestProcess()
{
    useStoreOfItsOwn();
    QCoreApplication::setApplicationName(u"Tovan Network Monitor"_s);
    QCoreApplication::setOrganizationName(u"Tovan"_s);
}

WindowFixture::WindowFixture()
{
    QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s).clear();
    system().reset();
}

WindowFixture::~WindowFixture()
{
    close();
}

void WindowFixture::open()
{
    m_window = std::make_unique<LumetraWindow>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void WindowFixture::close()
{
    m_window.reset();
    const auto topLevels = QApplication::topLevelWidgets();
    for (QWidget *widget : topLevels) {
        if (dynamic_cast<MiniSpeedWidget *>(widget))
            delete widget;
    }
}

void WindowFixture::tick()
{
    QTimer *timer = sampleTimer(*m_window);
    if (!timer->isActive())
        qFatal("the sampling timer is stopped");
    QTimerEvent event(timer->timerId());
    QCoreApplication::sendEvent(timer, &event);
}

QLabel *WindowFixture::labelStarting(const QString &start)
{
    const auto labels = m_window->findChildren<QLabel *>();
    for (QLabel *label : labels) {
        if (label->text().startsWith(start))
            return label;
    }
    qFatal("no label begins with \"%s\"", qPrintable(start));
}

QAbstractButton *WindowFixture::quickFilter(const QString &text)
{
    const auto buttons = m_window->findChildren<QAbstractButton *>(u"quickFilter"_s);
    for (QAbstractButton *button : buttons) {
        if (button->text() == text)
            return button;
    }
    qFatal("no quick filter \"%s\"", qPrintable(text));
}

QAction *WindowFixture::menuAction(const QString &text)
{
    const auto *bar = m_window->findChild<QMenuBar *>();
    QAction *action = bar ? findAction(bar->actions(), text) : nullptr;
    if (!action)
        qFatal("no menu entry \"%s\"", qPrintable(text));
    return action;
}

QTableWidget *WindowFixture::appsTable()
{
    return tableWithFirstHeader(*m_window, u"Name"_s);
}

QTableWidget *WindowFixture::rulesTable()
{
    return tableWithFirstHeader(*m_window, u"Application"_s);
}

int WindowFixture::rowOf(const QTableWidget *table, const QString &name)
{
    for (int row = 0; row < table->rowCount(); ++row) {
        const auto *item = table->item(row, 0);
        if (item && item->text().trimmed() == name)
            return row;
    }
    return -1;
}

QStringList WindowFixture::rowTexts(const QTableWidget *table, int row)
{
    QStringList texts;
    for (int column = 0; column < table->columnCount(); ++column) {
        const auto *item = table->item(row, column);
        texts.append(item ? item->text() : QString());
    }
    return texts;
}

void WindowFixture::click(QWidget *widget)
{
    // A check box does not react beside its text, where a wide one has its middle.
    const bool isCheckBox = qobject_cast<QCheckBox *>(widget) != nullptr;
    QTest::mouseClick(widget, Qt::LeftButton, {},
                      isCheckBox ? QPoint(8, widget->height() / 2) : QPoint());
}

void WindowFixture::clickCheckBox(QTableWidget *table, int row, int column)
{
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, checkBoxCentre(table, row, column));
}

QPoint WindowFixture::checkBoxCentre(const QTableWidget *table, int row, int column)
{
    const QRectF box = paintedCheckBox(table, row, column);
    if (box.isEmpty())
        qFatal("no check box is painted in row %d, column %d", row, column);
    return box.center().toPoint();
}

QString WindowFixture::storePath()
{
    return QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s).fileName();
}

void WindowFixture::store(const QString &key, const QVariant &value)
{
    QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s).setValue(key, value);
}

QVariant WindowFixture::stored(const QString &key)
{
    return QSettings(u"Tovan"_s, u"Tovan Network Monitor"_s).value(key);
}

QString WindowFixture::toast()
{
    const auto *frame = find<QFrame>("toast");
    return frame->isHidden() ? QString() : find<QLabel>("toastText")->text();
}

QWidget *WindowFixture::settingControl(const QString &label)
{
    const auto *page = find<QScrollArea>("settingsScroll");
    const auto boxes = page->findChildren<QCheckBox *>();
    for (QCheckBox *box : boxes) {
        if (box->text() == label)
            return box;
    }
    const auto labels = page->findChildren<QLabel *>(u"metricLabel"_s);
    for (QLabel *candidate : labels) {
        if (candidate->text() != label)
            continue;
        const auto *grid = qobject_cast<QGridLayout *>(candidate->parentWidget()->layout());
        int row = 0;
        int column = 0;
        int rowSpan = 0;
        int columnSpan = 0;
        grid->getItemPosition(grid->indexOf(candidate), &row, &column, &rowSpan, &columnSpan);
        return grid->itemAtPosition(row, 1)->widget();
    }
    return nullptr;
}
