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
        NoScaling,       ///< pixel by pixel, centred, cut off where it does not fit
        KeepAspectRatio, ///< as large as fits, centred
        FillWidget
    };

    explicit ImageWidget(QWidget* parent = nullptr);

    /// A null image removes what is shown.
    void setImage(const ConstImagePtr& image);
    void removeImage();
    /// In the format that the path's ending names. False without an image, too.
    bool saveImageFile(const QString& path) const;
    void setScalingMode(ScalingMode mode);
    /// Where the image is painted, in the widget's coordinates.
    QRect imageRect() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage m_image;
    ScalingMode m_mode = KeepAspectRatio;
};

} // namespace kelp
