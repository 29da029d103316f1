#include "ImageTestSupport.h"

#include "kelpException.h"
#include "kelpImageTools.h"

#include <QColor>

#include <limits>

namespace {

using imagetest::makeImage;
using imagetest::valuesOf;

const std::vector<int> monoTypes{kelp::MonoUInt8, kelp::MonoInt8,  kelp::MonoUInt32,
                                 kelp::MonoInt32, kelp::MonoFloat, kelp::MonoUInt16};

TEST(Image, StartsAsZerosWithSpacingOne)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt16, {3, 2, 2});
    EXPECT_EQ(image->getNumberOfPixels(), 12u);
    EXPECT_EQ(valuesOf<std::uint16_t>(*image), std::vector<std::uint16_t>(12, 0));
    EXPECT_EQ(image->getSpacing(), (kelp::Vector3<double>{1.0, 1.0, 1.0}));
}

TEST(Image, ColumnsAreTheWidthAndRowsTheHeight)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt8, {5, 7, 2}, {0.1, 0.2, 0.3});
    EXPECT_EQ(image->getWidth(), 5);
    EXPECT_EQ(image->getColumns(), 5);
    EXPECT_EQ(image->getHeight(), 7);
    EXPECT_EQ(image->getRows(), 7);
    EXPECT_EQ(image->getDimensions(), (kelp::Vector3<int>{5, 7, 2}));
    EXPECT_EQ(image->getSpacing(), (kelp::Vector3<double>{0.1, 0.2, 0.3}));
}

TEST(Image, PixelTypesHaveTheirSizes)
{
    EXPECT_EQ(kelp::bytesPerPixel(0), 1u);
    EXPECT_EQ(kelp::bytesPerPixel(1), 1u);
    EXPECT_EQ(kelp::bytesPerPixel(2), 4u);
    EXPECT_EQ(kelp::bytesPerPixel(3), 4u);
    EXPECT_EQ(kelp::bytesPerPixel(4), 4u);
    EXPECT_EQ(kelp::bytesPerPixel(8), 4u);
    EXPECT_EQ(kelp::bytesPerPixel(15), 2u);
}

TEST(Image, RefusesSizesThatCannotBe)
{
    constexpr int most = std::numeric_limits<int>::max();
    EXPECT_THROW(kelp::Image::create(kelp::MonoUInt8, {-1, 1, 1}), kelp::Assertion);
    EXPECT_THROW(kelp::Image::create(kelp::MonoUInt8, {1, 1, -1}), kelp::Assertion);
    EXPECT_THROW(kelp::Image::create(kelp::MonoFloat, {most, most, most}), kelp::Assertion);
}

TEST(Image, MayBeEmpty)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt8, {0, 4, 1});
    EXPECT_EQ(image->getNumberOfPixels(), 0u);
    EXPECT_EQ(image->copy()->getNumberOfPixels(), 0u);
    EXPECT_EQ(image->convertTo(kelp::MonoUInt16)->getNumberOfPixels(), 0u);
}

TEST(Image, ACopyIsDeep)
{
    const kelp::ImagePtr image = makeImage<std::uint8_t>(kelp::MonoUInt8, {2, 1, 1}, {1, 2});
    const kelp::ImagePtr copy = image->copy();
    image->pixels<std::uint8_t>()[0] = 9;
    EXPECT_EQ(valuesOf<std::uint8_t>(*copy), (std::vector<std::uint8_t>{1, 2}));
}

TEST(Image, ConversionKeepsValuesAndSpacing)
{
    for (const int from : monoTypes) {
        for (const int to : monoTypes) {
            const kelp::ImagePtr bytes =
                makeImage<std::uint8_t>(kelp::MonoUInt8, {3, 1, 1}, {0, 1, 127});
            bytes->setSpacing({0.1, 0.2, 0.3});
            const kelp::ImagePtr converted = bytes->convertTo(from)->convertTo(to);
            EXPECT_EQ(converted->getPixelTypeId(), to);
            EXPECT_EQ(converted->getSpacing(), bytes->getSpacing());
            EXPECT_EQ(valuesOf<std::uint8_t>(*converted->convertTo(kelp::MonoUInt8)),
                      valuesOf<std::uint8_t>(*bytes))
                << from << " to " << to;
        }
    }
}

TEST(Image, ConversionOfBytesToSixteenBitsDoesNotScale)
{
    const kelp::ImagePtr bytes = makeImage<std::uint8_t>(kelp::MonoUInt8, {2, 1, 1}, {0, 255});
    EXPECT_EQ(valuesOf<std::uint16_t>(*bytes->convertTo(kelp::MonoUInt16)),
              (std::vector<std::uint16_t>{0, 255}));
}

TEST(Image, ConversionClampsToTheTargetType)
{
    const kelp::ImagePtr wide =
        makeImage<std::int32_t>(kelp::MonoInt32, {3, 1, 1}, {-300, 200, 70000});
    EXPECT_EQ(valuesOf<std::uint8_t>(*wide->convertTo(kelp::MonoUInt8)),
              (std::vector<std::uint8_t>{0, 200, 255}));
    EXPECT_EQ(valuesOf<std::int8_t>(*wide->convertTo(kelp::MonoInt8)),
              (std::vector<std::int8_t>{-128, 127, 127}));
    EXPECT_EQ(valuesOf<std::uint16_t>(*wide->convertTo(kelp::MonoUInt16)),
              (std::vector<std::uint16_t>{0, 200, 65535}));
    EXPECT_EQ(valuesOf<std::uint32_t>(*wide->convertTo(kelp::MonoUInt32)),
              (std::vector<std::uint32_t>{0, 200, 70000}));
}

TEST(Image, ConversionOfFloatsRoundsAndTakesEveryValue)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const kelp::ImagePtr floats = makeImage<float>(
        kelp::MonoFloat, {6, 1, 1},
        {0.5f, 1.4f, -0.6f, infinity, -infinity, std::numeric_limits<float>::quiet_NaN()});
    EXPECT_EQ(valuesOf<std::uint8_t>(*floats->convertTo(kelp::MonoUInt8)),
              (std::vector<std::uint8_t>{1, 1, 0, 255, 0, 0}));
    EXPECT_EQ(valuesOf<std::int32_t>(*floats->convertTo(kelp::MonoInt32))[3],
              std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(valuesOf<std::uint32_t>(*floats->convertTo(kelp::MonoUInt32))[3],
              std::numeric_limits<std::uint32_t>::max());
}

TEST(Image, ColorBecomesGreyByQtsWeights)
{
    const kelp::ImagePtr color = kelp::Image::create(kelp::ColorRGBA8, {2, 1, 1});
    const std::vector<unsigned char> channels{200, 100, 50, 255, 7, 7, 7, 0};
    std::copy(channels.begin(), channels.end(), color->pixels<unsigned char>());
    const auto expected = static_cast<std::uint8_t>((200 * 11 + 100 * 16 + 50 * 5) / 32);
    EXPECT_EQ(valuesOf<std::uint8_t>(*color->convertTo(kelp::MonoUInt8)),
              (std::vector<std::uint8_t>{expected, 7}));
    EXPECT_EQ(valuesOf<std::uint16_t>(*color->convertTo(kelp::MonoUInt16)),
              (std::vector<std::uint16_t>{expected, 7}));
}

TEST(Image, GreyBecomesOpaqueColor)
{
    const kelp::ImagePtr grey = makeImage<std::uint16_t>(kelp::MonoUInt16, {2, 1, 1}, {9, 300});
    const kelp::ImagePtr color = grey->convertTo(kelp::ColorRGBA8);
    const unsigned char* const channels = color->pixels<unsigned char>();
    EXPECT_EQ(std::vector<int>(channels, channels + 8),
              (std::vector<int>{9, 9, 9, 255, 255, 255, 255, 255}));
}

TEST(ImageSwitch, GivesEachMonoTypeItsCxxType)
{
    const auto sizeAndSign = [](auto pixel) {
        using T = decltype(pixel);
        return std::make_tuple(sizeof(T), std::is_signed_v<T>, std::is_floating_point_v<T>);
    };
    EXPECT_EQ(kelp::monoImageSwitch(0, sizeAndSign), std::make_tuple(1u, false, false));
    EXPECT_EQ(kelp::monoImageSwitch(1, sizeAndSign), std::make_tuple(1u, true, false));
    EXPECT_EQ(kelp::monoImageSwitch(2, sizeAndSign), std::make_tuple(4u, false, false));
    EXPECT_EQ(kelp::monoImageSwitch(3, sizeAndSign), std::make_tuple(4u, true, false));
    EXPECT_EQ(kelp::monoImageSwitch(4, sizeAndSign), std::make_tuple(4u, true, true));
    EXPECT_EQ(kelp::monoImageSwitch(15, sizeAndSign), std::make_tuple(2u, false, false));
}

TEST(ImageSwitch, RefusesEveryOtherNumberByName)
{
    for (const int id : {-1, 5, 6, 7, 8, 9, 14, 16}) {
        try {
            kelp::monoImageSwitch(id, [](auto) {});
            ADD_FAILURE() << "no exception for " << id;
        } catch (const kelp::Exception& exception) {
            EXPECT_TRUE(exception.getMessage().startsWith(
                "KELP_MONO_IMAGE_SWITCH called with unsupported pixel type."));
        }
    }
}

TEST(ImageSlices, AreTheVolumesPixelsInOrder)
{
    const kelp::ImagePtr volume =
        makeImage<std::uint16_t>(kelp::MonoUInt16, {2, 1, 3}, {1, 2, 3, 4, 5, 6});
    volume->setSpacing({0.1, 0.2, 0.3});
    const QList<kelp::ConstImagePtr> slices = kelp::ImageTools::slice(volume);
    ASSERT_EQ(slices.size(), 3);
    EXPECT_EQ(slices[1]->getDimensions(), (kelp::Vector3<int>{2, 1, 1}));
    EXPECT_EQ(slices[1]->getSpacing(), volume->getSpacing());
    EXPECT_EQ(valuesOf<std::uint16_t>(*slices[0]), (std::vector<std::uint16_t>{1, 2}));
    EXPECT_EQ(valuesOf<std::uint16_t>(*slices[2]), (std::vector<std::uint16_t>{5, 6}));
}

} // namespace
