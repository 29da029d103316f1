#include "IndicatorStyle.h"

#include "Appearance.h"

#include <QCheckBox>
#include <QImage>
#include <QRadioButton>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

/// The button as it stands in a list.
template <typename Button>
QImage pictureOf(const QPalette& palette, QStyle& style)
{
    Button button;
    button.setStyle(&style);
    QPalette onBase = palette;
    onBase.setColor(QPalette::Window, palette.color(QPalette::Base));
    button.setPalette(onBase);
    button.setAutoFillBackground(true);
    return button.grab().toImage();
}

/// The greatest difference of lightness between a pixel and the ground, over the whole widget.
int contrastOfIndicator(const QImage& picture)
{
    const int ground = picture.pixelColor(picture.width() - 1, 0).lightness();
    int contrast = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            contrast = std::max(contrast, std::abs(picture.pixelColor(x, y).lightness() - ground));
        }
    }
    return contrast;
}

TEST(IndicatorStyle, LeavesLightPalettesAsTheStyleBelowDrawsThem)
{
    kelp::IndicatorStyle style;
    QProxyStyle below;
    const QPalette light = kelp::lightPalette();
    EXPECT_EQ(pictureOf<QCheckBox>(light, style), pictureOf<QCheckBox>(light, below));
    EXPECT_EQ(pictureOf<QRadioButton>(light, style), pictureOf<QRadioButton>(light, below));
}

TEST(IndicatorStyle, ShowsEmptyBoxesAndRadioButtonsOnTheGroundOfADarkList)
{
    constexpr int visible = 60;
    kelp::IndicatorStyle style;
    QProxyStyle below;
    const QPalette dark = kelp::darkPalette();
    EXPECT_GT(contrastOfIndicator(pictureOf<QCheckBox>(dark, style)), visible);
    EXPECT_GT(contrastOfIndicator(pictureOf<QRadioButton>(dark, style)), visible);
    EXPECT_LT(contrastOfIndicator(pictureOf<QCheckBox>(dark, below)), visible);
}

} // namespace
