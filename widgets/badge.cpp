#include "widgets/badge.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>

using namespace Qt::StringLiterals;

QFrame *makeBadge(const QString &text)
{
    auto *badge = new QFrame;
    badge->setObjectName(u"badge"_s);
    // The sheet rounds its corners by 16 pixels; a lower frame would be drawn with square ones.
    badge->setMinimumHeight(32);
    badge->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto *layout = new QHBoxLayout(badge);
    layout->setContentsMargins(14, 7, 14, 7);

    auto *dot = new QLabel;
    dot->setFixedSize(10, 10);
    dot->setStyleSheet(u"background:#ff9f8a; border-radius:5px;"_s);
    layout->addWidget(dot);

    auto *label = new QLabel(text);
    label->setObjectName(u"badgeText"_s);
    label->setTextFormat(Qt::PlainText);
    layout->addWidget(label);
    return badge;
}
