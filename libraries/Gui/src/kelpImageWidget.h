#pragma once

#include "kelpImage.h"

#include <QImage>
#include <QWidget>

namespace kelp {

/// Shows one image.
class ImageWidget : public QWidget
{
    Q_OBJECT

public:
    enum ScalingMode
    {
        NoScaling,
        KeepAspectRatio,
        FillWidget
    };

    explicit ImageWidget(QWidget* parent = nullptr);

    void setImage(const ConstImagePtr& image);
    void removeImage();
    bool saveImageFile(const QString& path) const;
    void setScalingMode(ScalingMode mode);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage m_image;
    ScalingMode m_mode = KeepAspectRatio;
};

} // namespace kelp
