#include "widgets/namedwidgets.h"

#include <QLabel>
#include <QPushButton>

using namespace Qt::StringLiterals;

QLabel *makeLabel(const QString &text, const QString &objectName)
{
    auto *label = new QLabel(text);
    label->setObjectName(objectName);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QPushButton *makeActionButton(const QString &text)
{
    auto *button = new QPushButton(text);
    button->setObjectName(u"actionButton"_s);
    return button;
}
