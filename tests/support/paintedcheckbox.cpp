#include "tests/support/paintedcheckbox.h"

#include <QImage>
#include <QTableWidget>

namespace {

/// Whether a pixel has the colour that the theme fills its check boxes with, and nothing else in a
/// row.
bool isOfBox(QColor pixel)
{
    constexpr int tolerance = 3; // what a style shades it by
    return qAbs(pixel.red() - 0x09) <= tolerance && qAbs(pixel.green() - 0x0d) <= tolerance
        && qAbs(pixel.blue() - 0x19) <= tolerance;
}

} // namespace

QRectF paintedCheckBox(const QTableWidget *table, int row, int column, qreal devicePixelRatio)
{
    const QRect cell = table->visualRect(table->model()->index(row, column));
    QImage image((QSizeF(cell.size()) * devicePixelRatio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(devicePixelRatio);
    // Without what lies over the cells: an editor has the same colour.
    table->viewport()->render(&image, {}, cell, QWidget::DrawWindowBackground);

    QRect filled;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (isOfBox(image.pixelColor(x, y)))
                filled |= QRect(x, y, 1, 1);
        }
    }
    if (filled.isEmpty())
        return {};
    const QRectF inside(QPointF(filled.topLeft()) / devicePixelRatio,
                        QSizeF(filled.size()) / devicePixelRatio);
    return inside.marginsAdded({1, 1, 1, 1}).translated(cell.topLeft()); // a line around it
}
