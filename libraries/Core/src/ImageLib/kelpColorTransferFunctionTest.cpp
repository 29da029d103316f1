#include "kelpColorTransferFunction.h"
#include "kelpException.h"
#include "kelpImageConverters.h"

#include <gtest/gtest.h>

#include <QColor>

#include <array>
#include <cmath>
#include <limits>

namespace {

using kelp::ColorMaps;
using kelp::PredefinedTransferfunctions;

constexpr int numberOfMaps = 7;

/// CIE L* of the color, taken as sRGB.
double lightnessAt(const PredefinedTransferfunctions& function, double value)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    const double luminance = 0.2126 * linear(function.getChannel(0)(value)) +
                             0.7152 * linear(function.getChannel(1)(value)) +
                             0.0722 * linear(function.getChannel(2)(value));
    constexpr double linearUpTo = 216.0 / 24389.0;
    return luminance > linearUpTo ? 116.0 * std::cbrt(luminance) - 16.0
                                  : luminance * 24389.0 / 27.0;
}

double hueAt(const PredefinedTransferfunctions& function, double value)
{
    return QColor::fromRgbF(function.getChannel(0)(value), function.getChannel(1)(value),
                            function.getChannel(2)(value))
        .hueF();
}

TEST(TransferFunctions, HaveTheNamesOfTheComboBoxInItsOrder)
{
    EXPECT_EQ(PredefinedTransferfunctions::getNames(),
              (QStringList{"Blue-Red", "Gray", "Glow", "Rainbow", "Rainbow Inverted",
                           "Rainbow Light", "Temperature"}));
    EXPECT_EQ(static_cast<int>(ColorMaps::Temperature), numberOfMaps - 1);
}

TEST(TransferFunctions, StayInsideZeroToOneAndMoveWithoutJumps)
{
    for (int map = 0; map < numberOfMaps; ++map) {
        const PredefinedTransferfunctions function(static_cast<ColorMaps>(map));
        for (int channel = 0; channel < 3; ++channel) {
            const auto color = function.getChannel(channel);
            double former = color(0.0);
            for (int step = 0; step <= 1000; ++step) {
                const double value = color(step / 1000.0);
                ASSERT_GE(value, 0.0);
                ASSERT_LE(value, 1.0);
                ASSERT_LT(std::abs(value - former), 0.02) << map << ' ' << step;
                former = value;
            }
        }
    }
}

constexpr int steps = 200;

TEST(TransferFunctions, GrowLighterWhereTheTableIsAnOrder)
{
    for (const ColorMaps map : {ColorMaps::Gray, ColorMaps::Glow, ColorMaps::Temperature}) {
        const PredefinedTransferfunctions function(map);
        const double perStep = (lightnessAt(function, 1.0) - lightnessAt(function, 0.0)) / steps;
        EXPECT_GT(perStep * steps, 80.0) << "from dark to light";
        for (int step = 1; step <= steps; ++step) {
            // No part of the range is flat: equal differences stay visible.
            ASSERT_GT(lightnessAt(function, step / 200.0) -
                          lightnessAt(function, (step - 1) / 200.0),
                      0.3 * perStep)
                << static_cast<int>(map) << ' ' << step;
        }
    }
}

TEST(TransferFunctions, BlueRedIsLightestInTheMiddleAndAsDarkAtBothEnds)
{
    const PredefinedTransferfunctions function(ColorMaps::BlueRed);
    for (int step = 1; step <= steps; ++step) {
        const double change =
            lightnessAt(function, step / 200.0) - lightnessAt(function, (step - 1) / 200.0);
        ASSERT_GT(step <= steps / 2 ? change : -change, 0.1) << step;
    }
    EXPECT_NEAR(lightnessAt(function, 0.0), lightnessAt(function, 1.0), 1.0);
}

TEST(TransferFunctions, RainbowsRunThroughTheHuesInOrder)
{
    for (const ColorMaps map : {ColorMaps::Rainbow, ColorMaps::RainbowLight}) {
        const PredefinedTransferfunctions function(map);
        EXPECT_NEAR(hueAt(function, 0.0), 240.0 / 360.0, 1e-4);
        EXPECT_NEAR(hueAt(function, 1.0), 0.0, 1e-4);
        for (int step = 1; step <= steps; ++step) {
            ASSERT_LT(hueAt(function, step / 200.0), hueAt(function, (step - 1) / 200.0))
                << static_cast<int>(map) << ' ' << step;
        }
    }
}

TEST(TransferFunctions, RainbowInvertedIsRainbowFromItsOtherEnd)
{
    const PredefinedTransferfunctions rainbow(ColorMaps::Rainbow);
    const PredefinedTransferfunctions inverted(ColorMaps::RainbowInverted);
    for (int channel = 0; channel < 3; ++channel) {
        for (int step = 0; step <= 100; ++step) {
            ASSERT_NEAR(rainbow.getChannel(channel)(step / 100.0),
                        inverted.getChannel(channel)(1.0 - step / 100.0), 1e-12);
        }
    }
}

TEST(TransferFunctions, EndsAreBlueAndRedWhereTheNameSaysSo)
{
    const PredefinedTransferfunctions function(ColorMaps::BlueRed);
    EXPECT_GT(function.getChannel(2)(0.0), function.getChannel(0)(0.0));
    EXPECT_GT(function.getChannel(0)(1.0), function.getChannel(2)(1.0));
}

TEST(TransferFunctions, FollowTheirInputRangeAndHoldTheEndsOutsideIt)
{
    PredefinedTransferfunctions function(ColorMaps::Gray);
    EXPECT_EQ(function.getInputRange(), std::make_pair(0.0, 1.0));
    function.setInputRange(100.0, 300.0);
    EXPECT_EQ(function.getInputRange(), std::make_pair(100.0, 300.0));
    const auto red = function.getChannel(0);
    EXPECT_DOUBLE_EQ(red(150.0), 0.25);
    EXPECT_EQ(red(100.0), 0.0);
    EXPECT_EQ(red(-1e9), 0.0);
    EXPECT_EQ(red(300.0), 1.0);
    EXPECT_EQ(red(std::numeric_limits<double>::infinity()), 1.0);
    EXPECT_EQ(red(std::numeric_limits<double>::quiet_NaN()), 0.0);
}

TEST(TransferFunctions, RefuseAnEmptyRangeAndAFourthChannel)
{
    PredefinedTransferfunctions function(ColorMaps::Gray);
    EXPECT_THROW(function.setInputRange(2.0, 2.0), kelp::Assertion);
    EXPECT_THROW(function.setInputRange(0.0, std::numeric_limits<double>::quiet_NaN()),
                 kelp::Assertion);
    EXPECT_THROW(function.getChannel(3), kelp::Assertion);
    EXPECT_THROW(function.getChannel(-1), kelp::Assertion);
}

TEST(ImageConverters, GiveThePixelsOfTheFirstSlice)
{
    const kelp::ImagePtr grey = kelp::Image::create(kelp::MonoUInt8, {3, 2, 2});
    for (int i = 0; i < 12; ++i) {
        grey->pixels<std::uint8_t>()[i] = static_cast<std::uint8_t>(i * 20);
    }
    const QImage picture = kelp::ImageConverters::makeQImage(grey);
    ASSERT_EQ(picture.size(), QSize(3, 2));
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            EXPECT_EQ(qGray(picture.pixel(x, y)), (y * 3 + x) * 20);
        }
    }
}

TEST(ImageConverters, KeepSixteenBitsAndColorWithItsTransparency)
{
    const kelp::ImagePtr deep = kelp::Image::create(kelp::MonoUInt16, {1, 1, 1});
    deep->pixels<std::uint16_t>()[0] = 4660;
    const QImage deepPicture = kelp::ImageConverters::makeQImage(deep);
    ASSERT_EQ(deepPicture.format(), QImage::Format_Grayscale16);
    EXPECT_EQ(*reinterpret_cast<const quint16*>(deepPicture.constScanLine(0)), 4660);

    const kelp::ImagePtr color = kelp::Image::create(kelp::ColorRGBA8, {1, 1, 1});
    const std::array<unsigned char, 4> channels{10, 20, 30, 40};
    std::copy(channels.begin(), channels.end(), color->pixels<unsigned char>());
    EXPECT_EQ(kelp::ImageConverters::makeQImage(color).pixelColor(0, 0), QColor(10, 20, 30, 40));
}

TEST(ImageConverters, GiveNoPictureOfNothing)
{
    EXPECT_TRUE(kelp::ImageConverters::makeQImage({}).isNull());
    EXPECT_TRUE(kelp::ImageConverters::makeQImage(kelp::Image::create(kelp::MonoUInt8, {3, 0, 1}))
                    .isNull());
    EXPECT_TRUE(kelp::ImageConverters::makeQImage(kelp::Image::create(kelp::MonoUInt8, {3, 2, 0}))
                    .isNull());
    EXPECT_THROW(kelp::ImageConverters::makeQImage(kelp::Image::create(kelp::MonoFloat, {1, 1, 1})),
                 kelp::NotImplemented);
}

} // namespace
