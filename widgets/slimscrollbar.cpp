#include "widgets/slimscrollbar.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QStyleOptionSlider>

using namespace Qt::StringLiterals;

SlimScrollBar::SlimScrollBar(Qt::Orientation orientation) : QScrollBar(orientation)
{
    // Beside the slider its area shows through, which may have round corners.
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

void SlimScrollBar::paintEvent(QPaintEvent * /*event*/)
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    QRect slider
        = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    // As narrow as this it still is easy to hit: the whole slider of the style takes the mouse.
    constexpr int thickness = 8;
    if (orientation() == Qt::Vertical)
        slider
            = QRect(slider.center().x() - thickness / 2, slider.top(), thickness, slider.height());
    else
        slider
            = QRect(slider.left(), slider.center().y() - thickness / 2, slider.width(), thickness);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(isSliderDown() || underMouse() ? u"#4f7cff"_s : u"#33415f"_s));
    painter.drawRoundedRect(slider, thickness / 2.0, thickness / 2.0);
}

void useSlimScrollBars(QAbstractScrollArea &area)
{
    area.setVerticalScrollBar(new SlimScrollBar(Qt::Vertical));
    area.setHorizontalScrollBar(new SlimScrollBar(Qt::Horizontal));
}
