#pragma once

#include <QScrollBar>

class QAbstractScrollArea;

/// A scroll bar that shows nothing but its slider, in the theme's colours. The style's own one is
/// drawn for a light window.
class SlimScrollBar : public QScrollBar
{
public:
    explicit SlimScrollBar(Qt::Orientation orientation);

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// Gives both scroll bars of an area this look; the area owns them.
void useSlimScrollBars(QAbstractScrollArea &area);
