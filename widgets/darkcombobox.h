#pragma once

#include <QComboBox>

/// A combo box with a plain arrow and a dark list. The style would draw its raised button over the
/// frame that the style sheet gives the box, and the box's light text on a light list.
class DarkComboBox : public QComboBox
{
public:
    DarkComboBox();

protected:
    void initStyleOption(QStyleOptionComboBox *option) const override;
    void paintEvent(QPaintEvent *event) override;
};
