#include "app/lumetrawindow.h"

#include "widgets/announcer.h"

#include <QFrame>
#include <QLabel>
#include <QTimer>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

void LumetraWindow::showToast(const QString &text)
{
    if (!toastFrame || !toastLabel)
        return;

    toastLabel->setText(text);
    toastFrame->adjustSize();
    const QSize hint = toastFrame->sizeHint();
    const int width = std::clamp(hint.width(), 230, 360);
    toastFrame->setFixedSize(width, std::max(hint.height(), 40));
    toastFrame->move(std::max(12, centralWidget()->width() - width - 24), 46);
    toastFrame->show();
    toastFrame->raise();
    announcer->say(text);

    // Every toast brings its own end; a later one is hidden by the earlier one's.
    QTimer::singleShot(2800ms, this, [this] {
        if (toastFrame)
            toastFrame->hide();
    });
}

void LumetraWindow::setStatus(const QString &text)
{
    if (statusLabel)
        statusLabel->setText(text);
}

void LumetraWindow::announceStatus(const QString &text)
{
    setStatus(text);
    if (announcer)
        announcer->say(text);
}
