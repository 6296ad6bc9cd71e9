#include "app/lumetrawindow.h"

#include "app/formatting.h"
#include "settings/profiles.h"
#include "shell/minispeedwidget.h"
#include "widgets/celltable.h"
#include "widgets/displaytext.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

void setChecked(QCheckBox *box, bool checked)
{
    if (box)
        box->setChecked(checked);
}

void setNumber(QLineEdit *edit, int number)
{
    if (edit)
        edit->setText(QString::number(number));
}

// A text that the box does not offer leaves it as it is.
void setChoice(QComboBox *box, const QString &text)
{
    if (box && box->currentText() != text)
        box->setCurrentText(text);
}

} // namespace

void LumetraWindow::applySettingsToUi()
{
    // Pauses without what a press on the pause button does besides, and never resumes.
    if (settings.pauseOnLaunch)
        paused = true;
    if (pauseButton)
        pauseButton->setText(paused ? u"Resume"_s : u"Pause"_s);

    setWindowTitle(settings.windowTitleText);
    if (titleLabel)
        titleLabel->setText(settings.windowTitleText);
    setChoice(settingsProfileCombo, settings.currentProfile);
    setChoice(profileCombo, settings.currentProfile);

    setChecked(miniWidgetCheck, settings.miniWidgetEnabled);
    if (trayMiniAction)
        trayMiniAction->setChecked(settings.miniWidgetEnabled);
    if (miniWidget) {
        miniWidget->setRates(traffic.currentDownBytes, traffic.currentUpBytes);
        miniWidget->setVisible(settings.miniWidgetEnabled);
    }

    if (sampleTimer)
        sampleTimer->setInterval(settings.refreshIntervalMs);
    if (appsTable)
        appsTable->setRowHeight(settings.compactMode ? 22 : 30);
    refreshDashboard();
}

void LumetraWindow::applyProfile(const QString &name)
{
    applyPreset(settings, name);

    // First the boxes, which then agree with the settings and do not apply the profile once more.
    setChoice(settingsProfileCombo, settings.currentProfile);
    setChoice(profileCombo, settings.currentProfile);
    setNumber(refreshIntervalEdit, settings.refreshIntervalMs);
    setNumber(defaultLimitEdit, settings.defaultLimitKbps);
    setNumber(maxRowsEdit, settings.maxTableRows);
    setChecked(compactCheck, settings.compactMode);
    setChecked(notificationsCheck, settings.notificationsEnabled);
    setNumber(warningEdit, settings.notify80);
    setNumber(criticalEdit, settings.notify95);

    applySettingsToUi();
    saveSettings();
    refreshSettingsSummary();
    const QString message = "Profile applied: "_L1 + settings.currentProfile;
    setStatus(message);
    showToast(message);
}

void LumetraWindow::setMiniWidgetEnabled(bool enabled)
{
    settings.miniWidgetEnabled = enabled;
    setChecked(miniWidgetCheck, enabled);
    applySettingsToUi();
    saveSettings();
}

void LumetraWindow::refreshSettingsSummary()
{
    if (!settingsSummary)
        return;
    settingsSummary->setText(
        u"Active profile: %1 / %2 allowance / resets on day %3 / alert levels %4% and %5%"_s.arg(
            displayedName(settings.currentProfile), formatBytes(settings.monthlyLimitBytes),
            QString::number(settings.renewalDay), QString::number(settings.notify80),
            QString::number(settings.notify95)));
}
