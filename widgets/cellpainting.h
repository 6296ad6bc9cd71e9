#pragma once

class QPainter;
class QStyle;
class QStyleOptionViewItem;
struct CellLayout;

/// Draws a cell with its parts at these places, each as the style draws it.
void paintCell(QPainter &painter, const QStyleOptionViewItem &cell, const CellLayout &layout,
               const QStyle &style);
