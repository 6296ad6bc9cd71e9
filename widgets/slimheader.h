#pragma once

#include <QHeaderView>

/// The header over the columns of a table: they are no wider than their titles and the padding that
/// the sheet gives them, and are laid out when the table says so.
class SlimHeader : public QHeaderView
{
public:
    SlimHeader();

    /// Lays out the columns that follow their contents, and paints the header, in the next turn of
    /// the event loop. By itself it would after every change of any cell, most of which leave all
    /// columns as wide as they are.
    void followContents();

protected:
    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                     const QList<int> &roles) override;
    QSize sectionSizeFromContents(int column) const override;
};
