#pragma once

#include <QCheckBox>

/// Sets the colours that a style draws a check box's indicator with, so that box and tick can be
/// told from the theme's dark ground.
void setIndicatorColours(QPalette &palette);

/// A check box whose indicator is drawn in these colours.
class DarkCheckBox : public QCheckBox
{
public:
    using QCheckBox::QCheckBox;

protected:
    void initStyleOption(QStyleOptionButton *option) const override;
};
