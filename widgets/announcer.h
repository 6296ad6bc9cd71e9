#pragma once

#include <QWidget>

/// What screen readers say by themselves, wherever the focus is. Nobody sees it, so what is heard
/// depends neither on how long a text is shown nor on whether another one was there before.
class Announcer : public QWidget
{
public:
    explicit Announcer(QWidget *parent);

    /// Has the text said once, also when it is the last one again; not while the window is hidden.
    void say(const QString &text);
};
