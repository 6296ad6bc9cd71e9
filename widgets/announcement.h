#pragma once

class QWidget;

/// Makes a widget one that screen readers take for a notification: they say its text by themselves.
void makeNotification(QWidget &widget);

/// Has screen readers say the widget's text once, though the focus is elsewhere.
void announce(QWidget &widget);
