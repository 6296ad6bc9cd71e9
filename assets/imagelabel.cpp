#include "assets/imagelabel.h"

#include "assets/images.h"

#include <utility>

ImageLabel::ImageLabel(QString image, QSize size) : fileName(std::move(image))
{
    setFixedSize(size);
    render();
}

void ImageLabel::render()
{
    renderedRatio = devicePixelRatioF();
    setPixmap(assetPixmap(fileName, size(), renderedRatio));
}

void ImageLabel::paintEvent(QPaintEvent *event)
{
    if (renderedRatio != devicePixelRatioF())
        render();
    QLabel::paintEvent(event);
}
