#pragma once

#include "shell/windowdrag.h"

#include <QWidget>

class QLabel;

/// Small frameless panel that floats above all windows and shows the current rates. It can only be
/// dragged.
class MiniSpeedWidget : public QWidget
{
public:
    MiniSpeedWidget();

    /// Shows the download and upload of one tick, in bytes.
    void setRates(quint64 downloadBytes, quint64 uploadBytes);

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    QLabel *downloadLabel = nullptr;
    QLabel *uploadLabel = nullptr;
    WindowDrag drag;
};
