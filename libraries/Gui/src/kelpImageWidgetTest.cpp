#include "kelpImageWidget.h"

#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

using kelp::ImageWidget;

constexpr std::array<unsigned char, 4> orange{255, 128, 0, 255};

kelp::ImagePtr makeImage(int width, int height)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::ColorRGBA8, {width, height, 1});
    auto* pixel = image->pixels<unsigned char>();
    for (int i = 0; i < width * height; ++i) {
        pixel = std::copy(orange.begin(), orange.end(), pixel);
    }
    return image;
}

/// The smallest rectangle around all orange pixels of the widget as painted.
QRect orangeRect(QWidget& widget)
{
    const QImage picture = widget.grab().toImage();
    QRect found;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y) == QColor(orange[0], orange[1], orange[2])) {
                found |= QRect(x, y, 1, 1);
            }
        }
    }
    return found;
}

TEST(ImageWidget, KeepsTheAspectRatioInTheMiddleAtFirst)
{
    ImageWidget widget;
    widget.resize(100, 100);
    widget.setImage(makeImage(40, 20));
    EXPECT_EQ(orangeRect(widget), QRect(0, 25, 100, 50));
    EXPECT_EQ(widget.sizeHint(), QSize(40, 20));
}

TEST(ImageWidget, FillsTheWidgetOrLeavesTheSizeAsTold)
{
    ImageWidget widget;
    widget.resize(100, 100);
    widget.setImage(makeImage(40, 20));
    widget.setScalingMode(ImageWidget::FillWidget);
    EXPECT_EQ(orangeRect(widget), QRect(0, 0, 100, 100));
    widget.setScalingMode(ImageWidget::NoScaling);
    EXPECT_EQ(orangeRect(widget).size(), QSize(40, 20));
    EXPECT_EQ(orangeRect(widget), widget.imageRect());
}

TEST(ImageWidget, ShowsNothingOnceTheImageIsRemoved)
{
    ImageWidget widget;
    widget.resize(50, 50);
    widget.setImage(makeImage(10, 10));
    ASSERT_FALSE(orangeRect(widget).isEmpty());
    widget.removeImage();
    EXPECT_TRUE(orangeRect(widget).isEmpty());
}

TEST(ImageWidget, SavesTheImageItselfAndSaysWhenItCannot)
{
    const QTemporaryDir folder;
    ImageWidget widget;
    widget.resize(100, 100);
    EXPECT_FALSE(widget.saveImageFile(folder.filePath(QStringLiteral("none.png"))));
    widget.setImage(makeImage(40, 20));
    const QString path = folder.filePath(QStringLiteral("image.png"));
    ASSERT_TRUE(widget.saveImageFile(path));
    const QImage saved(path);
    EXPECT_EQ(saved.size(), QSize(40, 20));
    EXPECT_EQ(saved.pixelColor(39, 19), QColor(orange[0], orange[1], orange[2]));
    EXPECT_FALSE(widget.saveImageFile(folder.filePath(QStringLiteral("missing/image.png"))));
}

} // namespace
