#pragma once

#include <QRectF>

class QTableWidget;

/// Where a cell's check box is, told by the pixels that are painted on a screen of this pixel
/// ratio: in the viewport's coordinates, its frame included; empty where none is painted.
QRectF paintedCheckBox(const QTableWidget *table, int row, int column, qreal devicePixelRatio = 1);
