#include "widgets/ratelabel.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

/// The label's text with each rate on a line of its own.
QString stacked(QString text)
{
    return text.replace("    "_L1, "\n"_L1);
}

} // namespace

QSize RateLabel::minimumSizeHint() const
{
    return fontMetrics().size(0, stacked(text()));
}

void RateLabel::paintEvent(QPaintEvent *event)
{
    if (width() >= sizeHint().width()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(contentsRect(), Qt::AlignRight | Qt::AlignVCenter, stacked(text()));
}
