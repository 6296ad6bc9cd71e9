#pragma once

#include <QLabel>

/// A label of one line. A text that does not fit ends in an ellipsis, and the whole of it is the
/// label's tool tip. Line breaks are shown as blanks, mark-up to the letter.
class ElidedLabel : public QLabel
{
public:
    explicit ElidedLabel(const QString &text = QString());

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};
