#include "kelpImageWidget.h"

#include "kelpImageConverters.h"

#include <QPainter>

namespace kelp {

ImageWidget::ImageWidget(QWidget* parent) : QWidget(parent) {}

void ImageWidget::setImage(const ConstImagePtr& image)
{
    m_image = ImageConverters::makeQImage(image);
    updateGeometry();
    update();
}

void ImageWidget::removeImage()
{
    setImage({});
}

bool ImageWidget::saveImageFile(const QString& path) const
{
    return m_image.save(path);
}

void ImageWidget::setScalingMode(ScalingMode mode)
{
    m_mode = mode;
    update();
}

QSize ImageWidget::sizeHint() const
{
    return m_image.size();
}

QRect ImageWidget::imageRect() const
{
    if (m_mode == FillWidget) {
        return rect();
    }
    const QSize size = m_mode == NoScaling
                           ? m_image.size()
                           : m_image.size().scaled(this->size(), Qt::KeepAspectRatio);
    QRect place(QPoint(), size);
    place.moveCenter(rect().center());
    return place;
}

void ImageWidget::paintEvent(QPaintEvent*)
{
    if (m_image.isNull()) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(imageRect(), m_image);
}

} // namespace kelp

#include "moc_kelpImageWidget.cpp"
