#include "widgets/announcer.h"

#include <QAccessible>
#include <QAccessibleWidget>

Announcer::Announcer(QWidget *parent) : QWidget(parent)
{
    hide(); // for good
    // Belongs to the toolkit from here on, until the widget goes.
    QAccessible::registerAccessibleInterface(
        new QAccessibleWidget(this, QAccessible::Notification));
}

void Announcer::say(const QString &text)
{
    if (!parentWidget()->isVisible())
        return;
    setAccessibleName(text);
    // Readers on Windows say an alert. Those on Linux do not hear of it from the toolkit; they say
    // a notification that appears.
    for (const auto type : {QAccessible::Alert, QAccessible::ObjectShow}) {
        QAccessibleEvent event(this, type);
        QAccessible::updateAccessibility(&event);
    }
}
