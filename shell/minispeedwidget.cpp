#include "shell/minispeedwidget.h"

#include "app/formatting.h"
#include "assets/imagelabel.h"
#include "shell/tasklists.h"
#include "shell/theme.h"
#include "shell/windowdrag.h"

#include <QBitmap>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

/// Every pixel that the sheet's rounded frame touches.
QBitmap frameShape(QSize size)
{
    constexpr int radius = 14;
    QImage frame(size, QImage::Format_ARGB32_Premultiplied);
    frame.fill(Qt::transparent);
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(QRect(QPoint(), size), radius, radius);
    painter.end();
    return QBitmap::fromImage(frame.createMaskFromColor(qRgba(0, 0, 0, 0), Qt::MaskInColor));
}

} // namespace

MiniSpeedWidget::MiniSpeedWidget()
{
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(220, 92);
    // Without a compositor what is transparent would be black.
    setMask(frameShape(size()));

    auto *shell = new QFrame(this);
    shell->setObjectName("miniShell"_L1);
    shell->setGeometry(rect());
    auto *layout = new QVBoxLayout(shell);
    layout->setContentsMargins(16, 12, 16, 12);

    auto *header = new QHBoxLayout;
    header->addWidget(new ImageLabel(u"tovan-site-icon.svg"_s, {24, 24}));
    auto *title = new QLabel(u"Tovan Mini"_s);
    title->setObjectName("miniTitle"_L1);
    header->addWidget(title);
    header->addStretch();
    layout->addLayout(header);

    downloadLabel = new QLabel;
    uploadLabel = new QLabel;
    for (QLabel *label : {downloadLabel, uploadLabel}) {
        label->setObjectName("miniRate"_L1);
        layout->addWidget(label);
    }
    setRates(0, 0);
    setStyleSheet(miniStyleSheet());
}

void MiniSpeedWidget::setRates(quint64 downloadBytes, quint64 uploadBytes)
{
    downloadLabel->setText("DL "_L1 + formatRate(downloadBytes));
    uploadLabel->setText("UL "_L1 + formatRate(uploadBytes));
}

bool MiniSpeedWidget::event(QEvent *event)
{
    if (event->type() == QEvent::ScreenChangeInternal) {
        // The window system has the mask in the pixels of the screen before.
        clearMask();
        setMask(frameShape(size()));
    }
    if (event->type() == QEvent::Show && !event->spontaneous())
        leaveOutOfTaskLists(*this);
    return QWidget::event(event);
}

void MiniSpeedWidget::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    drag.begin(*this, *event);
    event->accept();
}

void MiniSpeedWidget::mouseMoveEvent(QMouseEvent *event)
{
    if (!drag.isActive()) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    drag.moveTo(*this, *event);
    event->accept();
}

void MiniSpeedWidget::mouseReleaseEvent(QMouseEvent *event)
{
    drag.end();
    QWidget::mouseReleaseEvent(event);
}
