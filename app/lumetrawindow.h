#pragma once

#include "rules/apprule.h"
#include "rules/ruleslist.h"
#include "sampling/appsample.h"
#include "sampling/traffic.h"
#include "settings/appsettings.h"
#include "settings/settingsstore.h"
#include "settings/usage.h"
#include "shell/desktopmessage.h"
#include "shell/windowdrag.h"

#include <QIcon>
#include <QMainWindow>
#include <QMap>

#include <chrono>
#include <memory>
#include <optional>

class Announcer;
class ApplicationIcons;
class CellFilling;
class CellTable;
class MiniSpeedWidget;
class QAction;
class QCheckBox;
class QComboBox;
class QFrame;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QMenu;
class QMenuBar;
class QPushButton;
class QStackedWidget;
class QSystemTrayIcon;
class QTableWidgetItem;
class QTimer;
class SystemQueries;

/// The program's one window. It owns all state, and every operation is one of its members; each
/// section below is implemented in the folder of its name.
///
/// Widgets belong to the widget tree. A pointer to one that other sections use is null until its
/// page is built, and is tested before use.
class LumetraWindow : public QMainWindow
{
public:
    LumetraWindow();
    ~LumetraWindow() override;

    /// Shows the window and brings it to the front: for another start, the one with that activation
    /// (shell/activation.h), or for the user, who is at this process's tray icon.
    void openWindow(const QByteArray &activation = {});

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    // app/ ------------------------------------------------------------------------------------
    /// Flips between sampling and leaving everything as it is.
    void togglePause();
    /// Zeroes the session's bytes, peaks and history.
    void resetSession();
    /// Ends the process through closeEvent(), whether the window is shown or not.
    void exitProgram();
    /// Shows a short text over the pages for 2.8 seconds.
    void showToast(const QString &text);
    /// Writes a message that lasts until the next dashboard refresh.
    void setStatus(const QString &text);
    /// Writes one that nothing else tells of, for screen readers to say.
    void announceStatus(const QString &text);

    bool paused = false;
    bool quitting = false; ///< set by the exit commands and by a quit of the system's: closing
                           ///< then really closes
    QTimer *sampleTimer = nullptr;
    QFrame *toastFrame = nullptr;
    QLabel *toastLabel = nullptr;
    Announcer *announcer = nullptr; ///< says what toasts and the status line tell

    // sampling/ -------------------------------------------------------------------------------
    /// Samples the system once, advances all counters and refreshes every view.
    void tick();
    /// Announces the first application that was not there at the previous tick.
    void detectNewApps();

    std::unique_ptr<SystemQueries> queries;
    TrafficCounters traffic;
    InterfaceList interfaces; ///< interfaces counted at the last read
    QList<AppSample> samples; ///< snapshot of the last tick
    QStringList knownAppNames; ///< names of the previous tick, sorted
    bool knownAppNamesReady = false;

    // settings/ -------------------------------------------------------------------------------
    void loadSettings();
    /// Writes preferences, usage and rules to the store, unless it holds them. While that is not
    /// possible it is tried again, less often each time, and only then.
    void saveSettings();
    /// Writes them now in any case, waiting up to two seconds for a store that is in use.
    void saveBeforeTheEnd();
    /// Whether nothing has changed since the last save, and nobody has touched the store.
    bool isSaved() const;
    void trySaving(std::chrono::milliseconds patience);
    /// Raises the usage alert that is due now, if any.
    void checkUsageAlerts();
    /// Zeroes today's and the month's bytes, and the session.
    void resetUsageCounters();
    /// Overwrites settings with a traffic profile's and tells the user.
    void applyProfile(const QString &name);
    QWidget *buildControlCenterPage();
    QFrame *buildUsagePlanPanel();
    QFrame *buildStartupPanel();
    QFrame *buildAlertsPanel();
    QFrame *buildInterfacePanel();
    QFrame *buildEnginePanel();
    QFrame *buildSettingsActions();
    /// Takes over what the Control Center's controls say.
    void applyControlCenter();
    /// Brings the running window into line with the settings.
    void applySettingsToUi();
    void refreshSettingsSummary();
    /// Forgets all rules without asking.
    void clearRuleIndicators();
    /// Shows or hides the mini monitor for good: window, settings and controls alike.
    void setMiniWidgetEnabled(bool enabled);

    AppSettings settings;
    UsageCounters usage;
    QTimer *saveRetryTimer = nullptr; ///< runs after a save that was not possible
    StoredState savedState; ///< of the last save
    QByteArray savedMark; ///< the store's after the last save; empty when it may not be written
    QComboBox *settingsProfileCombo = nullptr;
    QLineEdit *allowanceEdit = nullptr;
    QLineEdit *renewalDayEdit = nullptr;
    QComboBox *unitCombo = nullptr;
    QCheckBox *startMinimizedCheck = nullptr;
    QCheckBox *closeToTrayCheck = nullptr;
    QCheckBox *pauseOnLaunchCheck = nullptr;
    QCheckBox *miniWidgetCheck = nullptr;
    QCheckBox *notificationsCheck = nullptr;
    QLineEdit *warningEdit = nullptr;
    QLineEdit *criticalEdit = nullptr;
    QCheckBox *compactCheck = nullptr;
    QCheckBox *systemRowCheck = nullptr;
    QCheckBox *rememberRulesCheck = nullptr;
    QLineEdit *titleEdit = nullptr;
    QComboBox *accentCombo = nullptr;
    QLineEdit *refreshIntervalEdit = nullptr;
    QLineEdit *maxRowsEdit = nullptr;
    QLineEdit *defaultLimitEdit = nullptr;
    QLabel *settingsSummary = nullptr;

    // rules/ ----------------------------------------------------------------------------------
    /// Acts on one application's rule; `action` is "block", "dl", "ul", "high", "low", "normal" or
    /// "reset".
    void applyRuleAction(const QString &appName, const QString &action);
    /// Flips the check box in `column` of the applications table's current row.
    void toggleSelectedRowCheck(int column);
    void appsTableItemChanged(QTableWidgetItem *item);
    void rulesTableItemChanged(QTableWidgetItem *item);
    QWidget *buildRulesPage();
    void buildRulesTable();
    /// Rebuilds the table from rules and samples. An open cell editor is carried over.
    void refreshRulesTable();
    /// Fills the rules table's rows, which are as many as these contents need and whose cells have
    /// moved down by `shift` rows since the last time.
    void fillRulesTable(const RulesContents &contents, int shift);
    void clearAllRules();
    /// Menus of the two tables; `position` in the table's viewport.
    void showAppsTableMenu(QPoint position);
    void showRulesTableMenu(QPoint position);
    /// Adds the three toggles that both menus begin with, and a separator.
    void addRuleToggles(QMenu &menu, const QString &appName);
    /// Adds an entry that applies `action` to the application.
    void addRuleAction(QMenu &menu, const QString &text, const QString &appName,
                       const QString &action);

    RuleMap rules;
    CellTable *rulesTable = nullptr;
    QString rulesFilterText; ///< trimmed text of the page's search field
    QString rulesFilterMode = QStringLiteral("All"); ///< "All", "Blocked" or "Limited"
    bool fillingRulesTable = false; ///< the table's own changes are no edits of the user
    std::optional<RulesContents> rulesTableContents; ///< no value when a cell was edited since

    // dashboard/ ------------------------------------------------------------------------------
    QWidget *buildDashboardPage();
    QFrame *buildTopBar();
    QMenuBar *buildMenuBar();
    QFrame *buildTabStrip();
    QHBoxLayout *buildSummaryRow();
    QFrame *buildQuickFilters();
    void buildAppsTable();
    QFrame *buildInfoView();
    /// Rewrites everything live on the dashboard, then the rules table and the settings summary.
    void refreshDashboard();
    void refreshAppsTable();
    /// Fills the applications table's rows, which are as many as these samples need.
    void fillAppsTable(const QList<AppSample> &shown);
    void setAppRow(CellFilling &filling, int row, const QString &name, const QString &dlRate,
                   const QString &ulRate, const QString &priority, const QString &dlLimit,
                   const QString &ulLimit, const QString &block, const QString &sockets,
                   bool systemRow);
    /// The application's own icon, or the program's; remembered from the first answer on.
    QIcon appIcon(const QString &name);
    /// Fills the Info View from a row of the applications table.
    void showDetails(int row);

    QString currentTab = QStringLiteral("Activity");
    QString currentQuickFilter = QStringLiteral("All");
    QString searchText; ///< trimmed text of the search box
    QMap<QString, QString> appPaths; ///< executable paths by application name, never pruned
    std::unique_ptr<ApplicationIcons> applicationIcons;
    QMap<QString, QIcon> iconCache; ///< by application name, never replaced
    bool fillingAppsTable = false; ///< the table's own changes are no edits of the user
    QLabel *rateLabel = nullptr;
    QComboBox *profileCombo = nullptr;
    QPushButton *pauseButton = nullptr;
    QLineEdit *searchBox = nullptr;
    QList<QPushButton *> tabButtons;
    QList<QPushButton *> quickFilterButtons;
    QLabel *downloadValue = nullptr;
    QLabel *uploadValue = nullptr;
    QLabel *activeAppsValue = nullptr;
    QLabel *monthValue = nullptr;
    CellTable *appsTable = nullptr;
    QLabel *infoHeading = nullptr;
    QLabel *infoDetails = nullptr;
    QLabel *sessionLabel = nullptr;
    QLabel *peakLabel = nullptr;
    QLabel *topAppLabel = nullptr;
    QLabel *statusLabel = nullptr;

    // shell/ ----------------------------------------------------------------------------------
    void buildShell();
    QFrame *buildTitleBar();
    QFrame *buildSidebar();
    QPushButton *createNavButton(QChar glyph, const QString &label, bool checked);
    /// Shows the page of this index of `pages` and checks its button alone.
    void showPage(int index);
    void showDashboardPage();
    void showRulesPage();
    void showSettingsPage();
    /// Builds the tray's menu; its icon follows as soon as the desktop has a tray.
    void buildTray();
    void showTrayIcon(QMenu *menu);
    /// Shows a message at the tray icon or, as long as there is no tray, through the desktop's
    /// notification service. Without either it waits for the first that comes, the last one only.
    void showDesktopMessage(const DesktopMessage &message);
    void showWaitingMessage();
    /// Shows a message at the tray icon, which must be there.
    void showBalloon(const DesktopMessage &message);

    QFrame *titleBar = nullptr;
    QLabel *titleLabel = nullptr;
    QStackedWidget *pages = nullptr;
    QPushButton *dashboardNavButton = nullptr;
    QPushButton *rulesNavButton = nullptr;
    QPushButton *settingsNavButton = nullptr;
    WindowDrag drag;
    QSystemTrayIcon *trayIcon = nullptr; ///< null as long as the desktop has no tray
    bool trayIconIsEmbedded = false; ///< has a place on the screen: whether its tray is still there
                                     ///< can then be told without a call to another process
    int messagesOffered = 0; ///< how many were offered to the notification service
    int notificationServicesCome = 0; ///< since the start
    std::optional<DesktopMessage> waitingMessage; ///< for a tray or a notification service
    QAction *trayPauseAction = nullptr;
    QAction *trayMiniAction = nullptr;
    MiniSpeedWidget *miniWidget = nullptr; ///< no parent; lives until the process ends
};
