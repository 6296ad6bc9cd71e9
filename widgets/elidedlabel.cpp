#include "widgets/elidedlabel.h"

#include "widgets/displaytext.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

using namespace Qt::StringLiterals;

ElidedLabel::ElidedLabel(const QString &text) : QLabel(text)
{
    setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::sizeHint() const
{
    ensurePolished();
    return fontMetrics().size(Qt::TextSingleLine, inOneLine(text()));
}

QSize ElidedLabel::minimumSizeHint() const
{
    ensurePolished();
    return fontMetrics().size(Qt::TextSingleLine, u"\u2026"_s);
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip || sizeHint().width() <= width())
        return QLabel::event(event);

    constexpr qsizetype longestTip = 500; // characters
    // As rich text it is wrapped; its own mark-up is none.
    QToolTip::showText(static_cast<const QHelpEvent *>(event)->globalPos(),
                       u"<p>"_s + inOneLine(text()).left(longestTip).toHtmlEscaped() + u"</p>"_s,
                       this);
    return true;
}

void ElidedLabel::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(
        contentsRect(),
        static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment()))
            | Qt::TextSingleLine,
        fontMetrics().elidedText(inOneLine(text()), Qt::ElideRight, contentsRect().width()));
}
