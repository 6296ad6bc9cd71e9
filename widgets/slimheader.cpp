#include "widgets/slimheader.h"

SlimHeader::SlimHeader() : QHeaderView(Qt::Horizontal)
{
    setSectionsClickable(true);
    setHighlightSections(true);
}

void SlimHeader::followContents()
{
    const QAbstractItemModel &cells = *model();
    QHeaderView::dataChanged(cells.index(0, 0), cells.index(0, cells.columnCount() - 1));
}

void SlimHeader::dataChanged(const QModelIndex & /*topLeft*/, const QModelIndex & /*bottomRight*/,
                             const QList<int> & /*roles*/)
{
    // followContents() is what does it.
}

QSize SlimHeader::sectionSizeFromContents(int column) const
{
    // The toolkit adds the style's margin to the sheet's padding.
    const int margin = style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, this);
    return QHeaderView::sectionSizeFromContents(column) - QSize(margin, 0);
}
