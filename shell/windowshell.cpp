#include "app/lumetrawindow.h"

#include "assets/imagelabel.h"
#include "shell/minispeedwidget.h"
#include "shell/theme.h"
#include "widgets/announcer.h"
#include "widgets/elidedlabel.h"

#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QStackedWidget>
#include <QToolTip>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int titleBarHeight = 34;

QLabel *createFootLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setObjectName("sidebarFoot"_L1);
    label->setWordWrap(true);
    return label;
}

void toggleMaximized(QWidget &window)
{
    if (window.isMaximized())
        window.showNormal();
    else
        window.showMaximized();
}

} // namespace

void LumetraWindow::buildShell()
{
    auto *root = new QWidget;
    root->setObjectName("root"_L1);
    auto *rootLayout = new QVBoxLayout(root);
    rootLayout->setContentsMargins(0, 0, 0, 0);
    rootLayout->setSpacing(0);

    rootLayout->addWidget(buildTitleBar(), 0);

    auto *body = new QWidget;
    auto *bodyLayout = new QHBoxLayout(body);
    bodyLayout->setContentsMargins(0, 0, 0, 0);
    bodyLayout->setSpacing(0);
    bodyLayout->addWidget(buildSidebar());
    pages = new QStackedWidget;
    pages->addWidget(buildDashboardPage());
    pages->addWidget(buildRulesPage());
    pages->addWidget(buildControlCenterPage());
    bodyLayout->addWidget(pages);
    rootLayout->addWidget(body, 1);

    toastFrame = new QFrame(root);
    toastFrame->setObjectName("toast"_L1);
    toastFrame->hide();
    auto *toastLayout = new QHBoxLayout(toastFrame);
    toastLayout->setContentsMargins(14, 9, 14, 9);
    toastLabel = new ElidedLabel;
    toastLabel->setObjectName("toastText"_L1);
    toastLayout->addWidget(toastLabel);
    announcer = new Announcer(root);

    connect(dashboardNavButton, &QPushButton::clicked, this, [this] { showDashboardPage(); });
    connect(rulesNavButton, &QPushButton::clicked, this, [this] { showRulesPage(); });
    connect(settingsNavButton, &QPushButton::clicked, this, [this] { showSettingsPage(); });

    setCentralWidget(root);
    setStyleSheet(mainStyleSheet());
    QToolTip::setPalette(toolTipPalette());
}

QFrame *LumetraWindow::buildTitleBar()
{
    titleBar = new QFrame;
    titleBar->setObjectName("titleBar"_L1);
    titleBar->setFixedHeight(titleBarHeight);
    titleBar->installEventFilter(this);
    auto *layout = new QHBoxLayout(titleBar);
    layout->setContentsMargins(12, 0, 8, 0);
    layout->setSpacing(8);

    titleLabel = new QLabel(settings.windowTitleText);
    titleLabel->setObjectName("titleBarText"_L1);
    titleLabel->setTextFormat(Qt::PlainText);
    // A long title is cut instead of widening the window.
    titleLabel->setMinimumWidth(1);
    titleLabel->installEventFilter(this);
    layout->addWidget(titleLabel);
    layout->addStretch();

    const auto addButton
        = [&](const QString &text, const QString &meaning, const QString &name, auto onClick) {
              auto *button = new QPushButton(text);
              button->setAccessibleName(meaning);
              button->setObjectName(name);
              connect(button, &QPushButton::clicked, this, onClick);
              layout->addWidget(button);
          };
    addButton(u"-"_s, u"Minimize"_s, u"windowButton"_s, [this] { showMinimized(); });
    addButton(u"[]"_s, u"Maximize"_s, u"windowButton"_s, [this] { toggleMaximized(*this); });
    addButton(u"X"_s, u"Close"_s, u"windowButtonClose"_s, [this] { close(); });
    return titleBar;
}

QFrame *LumetraWindow::buildSidebar()
{
    auto *sidebar = new QFrame;
    sidebar->setObjectName("sidebar"_L1);
    sidebar->setFixedWidth(218);
    auto *layout = new QVBoxLayout(sidebar);
    layout->setContentsMargins(28, 26, 16, 24);
    layout->setSpacing(18);

    auto *logo = new ImageLabel(u"tovan-wordmark.svg"_s, {154, 62});
    logo->setObjectName("logoWordmark"_L1);
    logo->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    layout->addWidget(logo, 0, Qt::AlignLeft);
    layout->addSpacing(22);

    dashboardNavButton = createNavButton(u'\u25C8', u"Dashboard"_s, true);
    rulesNavButton = createNavButton(u'\u2263', u"Rules"_s, false);
    settingsNavButton = createNavButton(u'\u2699', u"Settings"_s, false);
    for (QPushButton *button : {dashboardNavButton, rulesNavButton, settingsNavButton})
        layout->addWidget(button);
    layout->addSpacing(10);

    layout->addWidget(createFootLabel(u"Traffic control"_s));
    layout->addWidget(
        createFootLabel(u"Limits, blocking, and live activity are managed from Dashboard."_s));
    layout->addStretch();
    QLabel *background = createFootLabel(u"Running in background"_s);
    background->setAlignment(Qt::AlignCenter);
    layout->addWidget(background);
    return sidebar;
}

QPushButton *LumetraWindow::createNavButton(QChar glyph, const QString &label, bool checked)
{
    auto *button = new QPushButton(glyph + "    "_L1 + label);
    button->setAccessibleName(label);
    button->setProperty("class", u"nav"_s);
    button->setCheckable(true);
    button->setChecked(checked);
    return button;
}

void LumetraWindow::showPage(int index)
{
    pages->setCurrentIndex(index);
    // A click toggles a checkable button by itself, so each one is set every time.
    dashboardNavButton->setChecked(index == 0);
    rulesNavButton->setChecked(index == 1);
    settingsNavButton->setChecked(index == 2);
}

void LumetraWindow::showDashboardPage()
{
    showPage(0);
}

void LumetraWindow::showRulesPage()
{
    showPage(1);
    refreshRulesTable();
}

void LumetraWindow::showSettingsPage()
{
    showPage(2);
}

bool LumetraWindow::event(QEvent *event)
{
    // The window system has the icon in the pixels of the screen before.
    if (event->type() == QEvent::ScreenChangeInternal)
        setWindowIcon(windowIcon());
    return QMainWindow::event(event);
}

bool LumetraWindow::eventFilter(QObject *watched, QEvent *event)
{
    // Windows are asked to close before the program quits: one that only hides would keep it alive.
    if (watched == qApp && event->type() == QEvent::Quit)
        quitting = true;
    // Closed by the user. The end of the program closes it too, which is no wish to hide it.
    if (watched == miniWidget && event->type() == QEvent::Close && event->spontaneous())
        setMiniWidgetEnabled(false);
    if (watched != titleBar && watched != titleLabel)
        return QMainWindow::eventFilter(watched, event);

    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto *press = static_cast<QMouseEvent *>(event);
        if (press->button() != Qt::LeftButton)
            break;
        drag.begin(*this, *press);
        return true;
    }
    case QEvent::MouseMove:
        if (!drag.isActive() || isMaximized())
            break;
        drag.moveTo(*this, *static_cast<QMouseEvent *>(event));
        return true;
    case QEvent::MouseButtonRelease:
        drag.end();
        return true;
    case QEvent::MouseButtonDblClick:
        toggleMaximized(*this);
        return true;
    default:
        break;
    }
    return QMainWindow::eventFilter(watched, event);
}

void LumetraWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || event->position().y() > titleBarHeight) {
        QMainWindow::mousePressEvent(event);
        return;
    }
    drag.begin(*this, *event);
    event->accept();
}

void LumetraWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (!drag.isActive() || isMaximized()) {
        QMainWindow::mouseMoveEvent(event);
        return;
    }
    drag.moveTo(*this, *event);
    event->accept();
}

void LumetraWindow::mouseReleaseEvent(QMouseEvent *event)
{
    drag.end();
    QMainWindow::mouseReleaseEvent(event);
}
