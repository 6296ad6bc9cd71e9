#include "app/lumetrawindow.h"

#include "assets/imagelabel.h"
#include "settings/profiles.h"
#include "widgets/celltable.h"
#include "widgets/darkcombobox.h"
#include "widgets/elidedlabel.h"
#include "widgets/namedwidgets.h"
#include "widgets/ratelabel.h"
#include "widgets/slimscrollarea.h"

#include <QAction>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// A label that is cut rather than widening the page.
QLabel *createLabel(const QString &text, const QString &objectName = u"classicText"_s)
{
    QLabel *label = makeLabel(text, objectName);
    label->setMinimumWidth(1);
    return label;
}

/// A summary card: the frame and the label of its value.
std::pair<QFrame *, QLabel *> makeSummaryCard(const QString &title, const QString &value,
                                              const QString &objectName)
{
    auto *frame = new QFrame;
    frame->setObjectName(objectName);
    auto *layout = new QVBoxLayout(frame);
    layout->setContentsMargins(14, 10, 14, 10);
    layout->setSpacing(2);
    QLabel *titleLabel = createLabel(title, u"appMeta"_s);
    layout->addWidget(titleLabel);
    QLabel *valueLabel = createLabel(value, u"metricValue"_s);
    layout->addWidget(valueLabel);
    titleLabel->setBuddy(valueLabel); // says what the value is of
    frame->setAccessibleName(title + u' ' + value);
    return {frame, valueLabel};
}

void checkOnly(const QList<QPushButton *> &buttons, const QPushButton *checked)
{
    for (QPushButton *button : buttons)
        button->setChecked(button == checked);
}

} // namespace

QWidget *LumetraWindow::buildDashboardPage()
{
    auto *page = new QWidget;
    page->setObjectName("page"_L1);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(buildTopBar());
    layout->addWidget(buildTabStrip());
    layout->addLayout(buildSummaryRow());
    layout->addWidget(buildQuickFilters());

    auto *mainArea = new QHBoxLayout;
    mainArea->setContentsMargins(0, 0, 0, 0);
    mainArea->setSpacing(0);
    buildAppsTable();
    mainArea->addWidget(appsTable, 1);
    mainArea->addWidget(buildInfoView());
    layout->addLayout(mainArea, 1);

    statusLabel = createLabel(u"Ready"_s);
    statusLabel->setStyleSheet(
        u"background:#0e1324; border-top:1px solid #26324a; padding:5px 8px; color:#d8e1f5;"_s);
    layout->addWidget(statusLabel);
    return page;
}

QFrame *LumetraWindow::buildTopBar()
{
    auto *bar = new QFrame;
    bar->setObjectName("classicTop"_L1);
    auto *layout = new QHBoxLayout(bar);
    layout->setContentsMargins(12, 8, 12, 8);
    layout->setSpacing(10);

    layout->addWidget(new ImageLabel(u"tovan-wordmark.svg"_s, {74, 28}));
    layout->addSpacing(8);
    layout->addWidget(buildMenuBar(), 0, Qt::AlignVCenter);
    layout->addStretch();

    rateLabel = new RateLabel(u"DL 0 B/s    UL 0 B/s"_s);
    rateLabel->setObjectName("classicBlue"_L1);
    layout->addWidget(rateLabel);

    profileCombo = new DarkComboBox;
    profileCombo->setAccessibleName(u"Profile"_s);
    // On Linux the toolkit calls a combo box by what it shows, and asks its label for the rest.
    profileCombo->setAccessibleDescription(u"Profile"_s);
    profileCombo->addItems(profileNames());
    profileCombo->setCurrentText(settings.currentProfile);
    connect(profileCombo, &QComboBox::currentTextChanged, this, [this](const QString &text) {
        if (text != settings.currentProfile)
            applyProfile(text);
    });
    layout->addWidget(profileCombo);

    pauseButton = makeActionButton(u"Pause"_s);
    connect(pauseButton, &QPushButton::clicked, this, [this] { togglePause(); });
    layout->addWidget(pauseButton);
    QPushButton *resetButton = makeActionButton(u"Reset session"_s);
    connect(resetButton, &QPushButton::clicked, this, [this] { resetSession(); });
    layout->addWidget(resetButton);

    searchBox = new QLineEdit;
    searchBox->setObjectName("search"_L1);
    searchBox->setPlaceholderText(u"Search app..."_s);
    searchBox->setAccessibleName(searchBox->placeholderText());
    connect(searchBox, &QLineEdit::textChanged, this, [this](const QString &text) {
        searchText = text.trimmed();
        searchBox->setProperty("active", !searchText.isEmpty());
        // A property alone does not restyle a widget.
        searchBox->style()->unpolish(searchBox);
        searchBox->style()->polish(searchBox);
        refreshDashboard();
    });
    layout->addWidget(searchBox);
    return bar;
}

QMenuBar *LumetraWindow::buildMenuBar()
{
    auto *bar = new QMenuBar;
    // It belongs into the top bar also where the desktop shows menus of its own.
    bar->setNativeMenuBar(false);

    QMenu *file = bar->addMenu(u"File"_s);
    file->addAction(u"Pause monitoring"_s, this, [this] { togglePause(); });
    file->addAction(u"Reset session"_s, this, [this] { resetSession(); });
    file->addSeparator();
    file->addAction(u"Exit"_s, this, [this] { exitProgram(); });

    QMenu *tools = bar->addMenu(u"Tools"_s);
    tools->addAction(u"Focus search"_s, this, [this] {
        searchBox->setFocus(Qt::OtherFocusReason);
        searchBox->selectAll();
    });
    tools->addAction(u"Clear search"_s, this, [this] { searchBox->clear(); });
    tools->addSeparator();
    tools->addAction(u"Toggle Mini monitor"_s, this,
                     [this] { setMiniWidgetEnabled(!settings.miniWidgetEnabled); });
    tools->addAction(u"Toggle Block selected"_s, this, [this] { toggleSelectedRowCheck(6); });

    QMenu *window = bar->addMenu(u"Window"_s);
    window->addAction(u"Dashboard"_s, this, [this] { showDashboardPage(); });
    window->addAction(u"Rules Manager"_s, this, [this] { showRulesPage(); });
    window->addAction(u"Settings"_s, this, [this] { showSettingsPage(); });

    QMenu *help = bar->addMenu(u"Help"_s);
    help->addAction(u"About Tovan"_s, this, [this] {
        infoDetails->setText(u"Tovan Network Monitor\n"
                             "Interactive desktop bandwidth control prototype.\n"
                             "Built with Qt and C++."_s);
        announceStatus(u"About opened in Info View"_s);
    });
    return bar;
}

QFrame *LumetraWindow::buildTabStrip()
{
    auto *strip = new QFrame;
    strip->setObjectName("classicPanel"_L1);
    auto *layout = new QHBoxLayout(strip);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (const QString &text :
         {u"Activity"_s, u"Rule List"_s, u"Filter List"_s, u"Application List"_s, u"Network List"_s,
          u"Blocker"_s, u"Priorities"_s}) {
        auto *button = new QPushButton(text);
        button->setObjectName("classicTab"_L1);
        button->setCheckable(true);
        button->setChecked(text == currentTab);
        connect(button, &QPushButton::clicked, this, [this, button, text] {
            checkOnly(tabButtons, button);
            currentTab = text;
            refreshDashboard();
        });
        layout->addWidget(button);
        tabButtons.append(button);
    }
    layout->addStretch();
    return strip;
}

QHBoxLayout *LumetraWindow::buildSummaryRow()
{
    auto *layout = new QHBoxLayout;
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(10);
    const auto addCard
        = [layout](const QString &title, const QString &value, const QString &objectName) {
              const auto [frame, label] = makeSummaryCard(title, value, objectName);
              layout->addWidget(frame);
              return label;
          };
    downloadValue = addCard(u"Download"_s, u"0 B/s"_s, u"summaryBlue"_s);
    uploadValue = addCard(u"Upload"_s, u"0 B/s"_s, u"summaryViolet"_s);
    activeAppsValue = addCard(u"Active apps"_s, u"0"_s, u"summaryCoral"_s);
    monthValue = addCard(u"Month"_s, u"0 B"_s, u"summaryBlue"_s);
    return layout;
}

QFrame *LumetraWindow::buildQuickFilters()
{
    auto *strip = new QFrame;
    strip->setObjectName("classicPanel"_L1);
    auto *layout = new QHBoxLayout(strip);
    layout->setContentsMargins(10, 8, 10, 8);
    layout->setSpacing(8);
    auto *caption = new QLabel(u"Quick filters"_s);
    caption->setObjectName("classicText"_L1);
    layout->addWidget(caption);
    for (const QString &text :
         {u"All"_s, u"Active"_s, u"Limited"_s, u"Blocked"_s, u"High Priority"_s}) {
        auto *button = new QPushButton(text);
        button->setObjectName("quickFilter"_L1);
        button->setCheckable(true);
        button->setChecked(text == currentQuickFilter);
        // Its round ends are drawn only where twice their radius fits.
        button->setMinimumHeight(28);
        connect(button, &QPushButton::clicked, this, [this, button, text] {
            currentQuickFilter = text;
            checkOnly(quickFilterButtons, button);
            refreshDashboard();
            showToast("Filter: "_L1 + text);
        });
        layout->addWidget(button);
        quickFilterButtons.append(button);
    }
    layout->addStretch();
    return strip;
}

void LumetraWindow::buildAppsTable()
{
    appsTable = new CellTable({u"Name"_s, u"DL Rate"_s, u"UL Rate"_s, u"Priority"_s, u"DL Limit"_s,
                               u"UL Limit"_s, u"Block"_s, u"Sockets"_s});
    appsTable->setAccessibleName(u"Dashboard"_s);
    appsTable->setRowHeight(settings.compactMode ? 22 : 30);
    connect(appsTable, &QTableWidget::currentCellChanged, this,
            [this](int row) { showDetails(row); });
    connect(appsTable, &QTableWidget::customContextMenuRequested, this,
            [this](QPoint position) { showAppsTableMenu(position); });
    connect(appsTable, &QTableWidget::itemChanged, this,
            [this](QTableWidgetItem *item) { appsTableItemChanged(item); });
}

QFrame *LumetraWindow::buildInfoView()
{
    auto *panel = new QFrame;
    panel->setObjectName("classicPanel"_L1);
    panel->setFixedWidth(360);
    auto *layout = new QVBoxLayout(panel);
    layout->setContentsMargins(14, 12, 14, 12);
    layout->setSpacing(8);

    layout->addWidget(createLabel(u"Info View"_s, u"classicTitle"_s));
    infoHeading = new ElidedLabel(u"System overview"_s);
    infoHeading->setObjectName("classicBlue"_L1);
    layout->addWidget(infoHeading);
    layout->addWidget(createLabel(u"Details"_s));

    auto *scroll = new SlimScrollArea;
    scroll->setObjectName("infoScroll"_L1);
    scroll->setAccessibleName(u"Details"_s);
    scroll->setMinimumHeight(155);
    scroll->setMaximumHeight(190);
    auto *details = new QWidget;
    // Its square corners would cover the round ones of the box.
    details->setStyleSheet(u"background:transparent;"_s);
    auto *detailsLayout = new QVBoxLayout(details);
    detailsLayout->setContentsMargins(10, 8, 10, 8);
    infoDetails = createLabel(u"Select an app to inspect its rules and connections."_s);
    infoDetails->setWordWrap(true);
    infoDetails->setStyleSheet(u"color:#e8eefc;"_s);
    detailsLayout->addWidget(infoDetails);
    detailsLayout->addStretch();
    scroll->setWidget(details);
    layout->addWidget(scroll);

    layout->addWidget(createLabel(u"Actions"_s));
    auto *actions = new QGridLayout;
    actions->setHorizontalSpacing(8);
    actions->setVerticalSpacing(8);
    const auto createToggle = [this](const QString &text, int column) {
        QPushButton *button = makeActionButton(text);
        connect(button, &QPushButton::clicked, this,
                [this, column] { toggleSelectedRowCheck(column); });
        return button;
    };
    actions->addWidget(createToggle(u"Toggle DL Limit"_s, 4), 0, 0);
    actions->addWidget(createToggle(u"Toggle UL Limit"_s, 5), 0, 1);
    actions->addWidget(createToggle(u"Toggle Block"_s, 6), 1, 0, 1, 2);
    layout->addLayout(actions);

    layout->addWidget(createLabel(u"Session"_s));
    sessionLabel = createLabel(u"Session: 0 B"_s);
    layout->addWidget(sessionLabel);
    peakLabel = createLabel(u"Peak: 0 B/s down | 0 B/s up"_s);
    layout->addWidget(peakLabel);
    topAppLabel = new ElidedLabel(u"Top app: waiting..."_s);
    topAppLabel->setObjectName("classicText"_L1);
    layout->addWidget(topAppLabel);
    layout->addStretch();
    return panel;
}
