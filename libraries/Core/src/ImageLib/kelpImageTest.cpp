#include "kelpImage.h"
#include "kelpException.h"

#include <gtest/gtest.h>

namespace {

TEST(Image, StartsAsZeros)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt16, {3, 2, 2});
    EXPECT_EQ(image->getNumberOfPixels(), 12u);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(image->pixels<std::uint16_t>()[i], 0);
    }
}

TEST(Image, ConversionKeepsValues)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt8, {2, 1, 1}, {0.1, 0.2, 1.0});
    image->pixels<std::uint8_t>()[1] = 255;
    const kelp::ImagePtr wide = image->convertTo(kelp::MonoUInt16);
    EXPECT_EQ(wide->pixels<std::uint16_t>()[1], 255);
    EXPECT_EQ(wide->getSpacing(), image->getSpacing());
}

TEST(Image, ConversionClampsToTheTargetType)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt16, {1, 1, 1});
    image->pixels<std::uint16_t>()[0] = 300;
    EXPECT_EQ(image->convertTo(kelp::MonoUInt8)->pixels<std::uint8_t>()[0], 255);
    EXPECT_EQ(image->convertTo(kelp::MonoInt8)->pixels<std::int8_t>()[0], 127);
}

} // namespace
