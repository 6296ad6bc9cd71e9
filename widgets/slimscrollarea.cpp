#include "widgets/slimscrollarea.h"

#include "widgets/slimscrollbar.h"

#include <QFocusEvent>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

namespace {

class FocusFrame : public QWidget
{
public:
    explicit FocusFrame(QWidget &framed) : QWidget(&framed)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.state |= QStyle::State_KeyboardFocusChange;
        QStylePainter(this).drawPrimitive(QStyle::PE_FrameFocusRect, option);
    }
};

} // namespace

SlimScrollArea::SlimScrollArea() : focusFrame(new FocusFrame(*this))
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    useSlimScrollBars(*this);
}

void SlimScrollArea::focusInEvent(QFocusEvent *event)
{
    QScrollArea::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        focusFrame->raise();
        focusFrame->show();
    }
}

void SlimScrollArea::focusOutEvent(QFocusEvent *event)
{
    QScrollArea::focusOutEvent(event);
    focusFrame->hide();
}

void SlimScrollArea::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    focusFrame->setGeometry(rect());
}
