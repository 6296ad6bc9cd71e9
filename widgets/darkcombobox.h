#pragma once

#include <QComboBox>

/// A combo box with a plain arrow and a dark list. The style would draw its raised button over the
/// frame that the style sheet gives the box, and the box's light text on a light list.
///
/// It changes by its list and by keys. The wheel scrolls what is under it: whoever scrolls a page
/// means no box that happens to pass under the pointer.
class DarkComboBox : public QComboBox
{
public:
    DarkComboBox();

protected:
    void initStyleOption(QStyleOptionComboBox *option) const override;
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};
