#pragma once

#include <QScrollArea>

/// A scroll area without a frame, with slim scroll bars and contents as wide as itself, that shows
/// when the keyboard scrolls it. The toolkit's own one takes the focus and looks the same.
class SlimScrollArea : public QScrollArea
{
public:
    SlimScrollArea();

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *focusFrame; ///< Over everything, since the contents cover what the area paints itself.
};
