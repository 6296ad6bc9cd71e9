#pragma once

#include <QLabel>

/// Shows the download and the upload rate, which four blanks part in its text: side by side where
/// there is room, else one above the other.
class RateLabel : public QLabel
{
public:
    using QLabel::QLabel;

    /// Room for the wider of the two rates.
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};
