#include "widgets/darkcombobox.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionComboBox>
#include <QStyleOptionFocusRect>
#include <QStyledItemDelegate>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

DarkComboBox::DarkComboBox()
{
    // The list and the frame that holds it look like the menus.
    QWidget *popup = view()->parentWidget();
    popup->setObjectName("comboPopup"_L1);
    popup->setStyleSheet(u"* { background: #0e1324; color: #e8eefc; border: 0;"
                         " selection-background-color: #2563eb; selection-color: white; }"
                         "#comboPopup { border: 1px solid #26324a; }"
                         "QAbstractItemView::item { padding: 4px 7px; }"_s);
    // The menu-like delegate of some styles draws the chosen entry in the box's own colours.
    setItemDelegate(new QStyledItemDelegate(this));
}

void DarkComboBox::initStyleOption(QStyleOptionComboBox *option) const
{
    QComboBox::initStyleOption(option);
    option->subControls.setFlag(QStyle::SC_ComboBoxArrow, false);
}

void DarkComboBox::paintEvent(QPaintEvent *event)
{
    QComboBox::paintEvent(event);

    QStyleOptionComboBox option;
    QComboBox::initStyleOption(&option);
    const QRectF button
        = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this);
    const QPointF tip = button.center() + QPointF(-2.0, 2.0);
    QPainterPath arrow(tip + QPointF(-4.0, -4.0));
    arrow.lineTo(tip);
    arrow.lineTo(tip + QPointF(4.0, -4.0));

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(u"#9aa7c7"_s), 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(arrow);

    if (hasFocus()) {
        QStyleOptionFocusRect focus;
        focus.initFrom(this);
        focus.rect = rect().marginsRemoved({3, 3, 3, 3});
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
    }
}

void DarkComboBox::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}
