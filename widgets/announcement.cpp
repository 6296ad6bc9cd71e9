#include "widgets/announcement.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QWidget>

void makeNotification(QWidget &widget)
{
    // Belongs to the toolkit from here on, until the widget goes.
    QAccessible::registerAccessibleInterface(
        new QAccessibleWidget(&widget, QAccessible::Notification));
}

void announce(QWidget &widget)
{
    QAccessibleEvent event(&widget, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}
