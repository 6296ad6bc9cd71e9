#pragma once

#include <QApplication>
#include <QHelpEvent>
#include <QLabel>
#include <QToolTip>

/// Whether what a label of one line paints ends in an ellipsis: where its last ink is, there is
/// nothing above the dots.
inline bool endsInEllipsis(QLabel &label)
{
    const QImage image = label.grab().toImage();
    const QRgb ground = image.pixel(0, 0);
    const auto inkOf = [&](int column) {
        QRect ink;
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixel(column, y) != ground)
                ink |= QRect(column, y, 1, 1);
        }
        return ink;
    };
    int last = image.width() - 1;
    while (last > 0 && inkOf(last).isEmpty())
        --last;
    QRect end;
    constexpr int dots = 7; // two of them at the least
    for (int column = last; column > last - dots && column >= 0; --column)
        end |= inkOf(column);
    return !end.isEmpty() && end.height() <= 3;
}

/// Text of the tool tip that resting on the widget brings; empty when none comes.
inline QString toolTipOf(QWidget &widget)
{
    QToolTip::hideText();
    const QPoint centre = widget.rect().center();
    QHelpEvent event(QEvent::ToolTip, centre, widget.mapToGlobal(centre));
    QApplication::sendEvent(&widget, &event);
    return QToolTip::isVisible() ? QToolTip::text() : QString();
}
