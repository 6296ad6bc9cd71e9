#include "widgets/checkindicator.h"

#include <QStyleOptionButton>

using namespace Qt::StringLiterals;

void setIndicatorColours(QPalette &palette)
{
    palette.setColor(QPalette::Base, QColor(u"#090d19"_s));
    // Styles derive the frame from the window's colour, a shade darker.
    palette.setColor(QPalette::Window, QColor(u"#9aa7c7"_s));
}

void DarkCheckBox::initStyleOption(QStyleOptionButton *option) const
{
    QCheckBox::initStyleOption(option);
    setIndicatorColours(option->palette);
}
