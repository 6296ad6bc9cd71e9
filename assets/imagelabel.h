#pragma once

#include <QLabel>

/// Shows one of the program's images, sharp on whichever screen the label comes to. Empty when the
/// file or the SVG plug-in is missing.
class ImageLabel : public QLabel
{
public:
    /// The label has this size (logical pixels) for good, and the image is fitted into it.
    ImageLabel(QString image, QSize size);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void render();

    QString fileName;
    qreal renderedRatio = 0; ///< device pixel ratio of the image that is shown
};
