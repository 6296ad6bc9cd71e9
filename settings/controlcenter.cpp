#include "app/lumetrawindow.h"

#include "settings/profiles.h"
#include "settings/settingspanel.h"
#include "widgets/badge.h"
#include "widgets/namedwidgets.h"
#include "widgets/slimscrollarea.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QHBoxLayout *createHeader()
{
    auto *titles = new QVBoxLayout;
    titles->setSpacing(4);
    titles->addWidget(makeLabel(u"Control Center"_s, u"title"_s));
    titles->addWidget(
        makeLabel(u"Clean settings for plan usage, alerts, startup, and the monitoring table."_s,
                  u"subtitle"_s));
    auto *header = new QHBoxLayout;
    header->addLayout(titles);
    header->addStretch();
    header->addWidget(makeBadge(u"Saved locally"_s));
    return header;
}

} // namespace

QWidget *LumetraWindow::buildControlCenterPage()
{
    auto *scroll = new SlimScrollArea;
    scroll->setObjectName("settingsScroll"_L1);
    scroll->setAccessibleName(u"Control Center"_s);

    auto *page = new QWidget;
    page->setObjectName("page"_L1);
    page->setMinimumWidth(900);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(34, 24, 34, 28);
    layout->addLayout(createHeader());

    auto *panels = new QGridLayout;
    panels->setHorizontalSpacing(18);
    panels->setVerticalSpacing(18);
    panels->setColumnStretch(0, 3);
    panels->setColumnStretch(1, 2);
    panels->addWidget(buildUsagePlanPanel(), 0, 0);
    panels->addWidget(buildStartupPanel(), 0, 1);
    panels->addWidget(buildAlertsPanel(), 1, 0);
    panels->addWidget(buildInterfacePanel(), 1, 1);
    panels->addWidget(buildEnginePanel(), 2, 0, 1, 2);
    layout->addLayout(panels);
    layout->addWidget(buildSettingsActions());
    layout->addSpacing(8);
    scroll->setWidget(page);

    refreshSettingsSummary();
    return scroll;
}

QFrame *LumetraWindow::buildUsagePlanPanel()
{
    SettingsPanel panel(u"Usage Plan"_s);
    settingsProfileCombo = panel.addChoice(u"Profile"_s, profileNames(), settings.currentProfile);
    // Always in units of 1024^3 bytes: a plan of 500 "MB" reads 0, and is 1 "MB" when applied so.
    allowanceEdit = panel.addEdit(u"Allowance"_s,
                                  QString::number(wholeGigabytes(settings.monthlyLimitBytes)));
    renewalDayEdit = panel.addEdit(u"Reset day"_s, QString::number(settings.renewalDay));
    unitCombo = panel.addChoice(u"Unit"_s, {u"GB"_s, u"MB"_s}, settings.packageUnit);

    connect(settingsProfileCombo, &QComboBox::currentTextChanged, this,
            [this](const QString &text) {
                if (text != settings.currentProfile)
                    applyProfile(text);
            });
    return panel.frame();
}

QFrame *LumetraWindow::buildStartupPanel()
{
    SettingsPanel panel(u"Startup & Tray"_s);
    startMinimizedCheck = panel.addCheck(u"Launch minimized"_s, settings.startMinimized);
    closeToTrayCheck = panel.addCheck(u"Close to tray"_s, settings.closeToTray);
    pauseOnLaunchCheck = panel.addCheck(u"Start paused"_s, settings.pauseOnLaunch);
    miniWidgetCheck = panel.addCheck(u"Show mini monitor"_s, settings.miniWidgetEnabled);
    return panel.frame();
}

QFrame *LumetraWindow::buildAlertsPanel()
{
    SettingsPanel panel(u"Usage Alerts"_s);
    notificationsCheck = panel.addCheck(u"Enable alerts"_s, settings.notificationsEnabled);
    warningEdit = panel.addEdit(u"Warning %"_s, QString::number(settings.notify80));
    criticalEdit = panel.addEdit(u"Critical %"_s, QString::number(settings.notify95));
    return panel.frame();
}

QFrame *LumetraWindow::buildInterfacePanel()
{
    SettingsPanel panel(u"Interface & Data"_s);
    compactCheck = panel.addCheck(u"Compact rows"_s, settings.compactMode);
    systemRowCheck = panel.addCheck(u"Show This PC summary row"_s, settings.showSystemRow);
    rememberRulesCheck = panel.addCheck(u"Remember rules"_s, settings.rememberRules);
    titleEdit = panel.addEdit(u"Title"_s, settings.windowTitleText);
    accentCombo = panel.addChoice(u"Accent"_s, {u"Green"_s, u"Blue"_s, u"Violet"_s, u"Coral"_s},
                                  settings.accentColor);
    return panel.frame();
}

QFrame *LumetraWindow::buildEnginePanel()
{
    SettingsPanel panel(u"Monitoring Engine"_s);
    refreshIntervalEdit
        = panel.addEdit(u"Refresh (ms)"_s, QString::number(settings.refreshIntervalMs));
    maxRowsEdit = panel.addEdit(u"Max apps"_s, QString::number(settings.maxTableRows));
    defaultLimitEdit = panel.addEdit(u"Limit (KB/s)"_s, QString::number(settings.defaultLimitKbps));
    return panel.frame();
}

QFrame *LumetraWindow::buildSettingsActions()
{
    auto *frame = new QFrame;
    frame->setObjectName("panel"_L1);
    auto *layout = new QGridLayout(frame);
    layout->setContentsMargins(28, 18, 28, 18);
    layout->setHorizontalSpacing(12);

    const auto addButton = [&](const QString &text, const QString &name, int column, auto onClick) {
        auto *button = new QPushButton(text);
        button->setObjectName(name);
        connect(button, &QPushButton::clicked, this, onClick);
        layout->addWidget(button, 0, column);
    };
    addButton(u"Apply changes"_s, u"save"_s, 0, [this] { applyControlCenter(); });
    addButton(u"Reset usage counters"_s, u"actionButton"_s, 1, [this] { resetUsageCounters(); });
    addButton(u"Clear rule indicators"_s, u"actionButton"_s, 2, [this] { clearRuleIndicators(); });

    settingsSummary = makeLabel({}, u"subtitle"_s);
    layout->addWidget(settingsSummary, 1, 0, 1, 3);
    return frame;
}

void LumetraWindow::applyControlCenter()
{
    const quint64 allowance = parseAllowance(allowanceEdit->text());
    settings.packageUnit = unitCombo->currentText();
    settings.monthlyLimitBytes = allowanceBytes(allowance, settings.packageUnit);
    settings.renewalDay = parseClamped(renewalDayEdit->text(), &AppSettings::renewalDay);

    settings.startMinimized = startMinimizedCheck->isChecked();
    settings.closeToTray = closeToTrayCheck->isChecked();
    settings.pauseOnLaunch = pauseOnLaunchCheck->isChecked();
    settings.notificationsEnabled = notificationsCheck->isChecked();
    settings.notify80 = parseClamped(warningEdit->text(), &AppSettings::notify80);
    // Tighter than the stored bound: the critical level lies above the warning level.
    settings.notify95 = parseClamped(criticalEdit->text(), settings.notify80 + 1,
                                     numberSetting(&AppSettings::notify95).high);
    settings.compactMode = compactCheck->isChecked();
    settings.showSystemRow = systemRowCheck->isChecked();
    settings.rememberRules = rememberRulesCheck->isChecked();
    settings.miniWidgetEnabled = miniWidgetCheck->isChecked();

    settings.currentProfile = settingsProfileCombo->currentText();
    settings.windowTitleText = titleEdit->text().trimmed();
    if (settings.windowTitleText.isEmpty())
        settings.windowTitleText = AppSettings().windowTitleText;
    settings.accentColor = accentCombo->currentText();
    settings.refreshIntervalMs
        = parseClamped(refreshIntervalEdit->text(), &AppSettings::refreshIntervalMs);
    settings.maxTableRows = parseClamped(maxRowsEdit->text(), &AppSettings::maxTableRows);
    settings.defaultLimitKbps
        = parseClamped(defaultLimitEdit->text(), &AppSettings::defaultLimitKbps);

    // The fields show what was made of them.
    allowanceEdit->setText(QString::number(allowance));
    renewalDayEdit->setText(QString::number(settings.renewalDay));
    warningEdit->setText(QString::number(settings.notify80));
    criticalEdit->setText(QString::number(settings.notify95));
    refreshIntervalEdit->setText(QString::number(settings.refreshIntervalMs));
    maxRowsEdit->setText(QString::number(settings.maxTableRows));
    defaultLimitEdit->setText(QString::number(settings.defaultLimitKbps));

    saveSettings();
    applySettingsToUi();
    refreshSettingsSummary();
}

void LumetraWindow::clearRuleIndicators()
{
    rules.clear();
    refreshDashboard();
    refreshRulesTable();
    saveSettings();
    refreshSettingsSummary();
}
