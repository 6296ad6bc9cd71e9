#pragma once

#include <QEvent>
#include <QObject>
#include <QPaintEvent>
#include <QRegion>
#include <QWidget>

/// Notes which part of a widget is painted while it lives.
class Paintings : public QObject
{
public:
    explicit Paintings(QWidget &widget) { widget.installEventFilter(this); }

    QRegion region;

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return QObject::eventFilter(receiver, event);
    }
};
