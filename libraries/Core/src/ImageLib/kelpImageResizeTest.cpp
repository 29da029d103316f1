#include "ImageTestSupport.h"

#include "kelpException.h"
#include "kelpImageTools.h"

#include <cmath>
#include <random>

namespace {

using imagetest::makeImage;
using imagetest::valuesOf;
using kelp::InterpolationModes;

constexpr InterpolationModes mode = InterpolationModes::AreaOrLinear;

/// What one axis takes of the source, straight from the definition, in long double.
long double weightOf(int source, int sourceSize, int target, int targetSize)
{
    const long double scale = static_cast<long double>(sourceSize) / targetSize;
    if (targetSize < sourceSize) {
        const long double begin = std::max<long double>(source, target * scale);
        const long double end = std::min<long double>(source + 1, (target + 1) * scale);
        return std::max<long double>(0.0L, end - begin) / scale;
    }
    const long double position =
        std::min<long double>(std::max<long double>((target + 0.5L) * scale - 0.5L, 0.0L),
                              static_cast<long double>(sourceSize - 1));
    return std::max<long double>(0.0L, 1.0L - std::fabs(position - source));
}

long double expectedAt(const std::vector<long double>& source, const kelp::Vector3<int>& from,
                       const kelp::Vector3<int>& to, const kelp::Vector3<int>& at)
{
    long double sum = 0.0L;
    std::size_t index = 0;
    for (int z = 0; z < from.z; ++z) {
        for (int y = 0; y < from.y; ++y) {
            for (int x = 0; x < from.x; ++x) {
                sum += weightOf(x, from.x, at.x, to.x) * weightOf(y, from.y, at.y, to.y) *
                       weightOf(z, from.z, at.z, to.z) * source[index++];
            }
        }
    }
    return sum;
}

/// Every pixel must be the definition's value rounded half up; values so near to a half that long
/// double cannot tell on which side they lie may go either way.
template <typename T>
void compareWithDefinition(int pixelTypeId, const kelp::Vector3<int>& from,
                           const kelp::Vector3<int>& to, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> anyValue(0, std::is_signed_v<T> ? 100 : 255);
    std::vector<T> values(static_cast<std::size_t>(from.x) * from.y * from.z);
    for (T& value : values) {
        value = static_cast<T>(anyValue(random));
    }
    const std::vector<long double> exact(values.begin(), values.end());
    const kelp::ImagePtr result =
        kelp::ImageTools::resize(makeImage<T>(pixelTypeId, from, values), to, mode);
    ASSERT_EQ(result->getDimensions(), to);
    const T* pixel = result->pixels<T>();
    for (int z = 0; z < to.z; ++z) {
        for (int y = 0; y < to.y; ++y) {
            for (int x = 0; x < to.x; ++x, ++pixel) {
                const long double expected = expectedAt(exact, from, to, {x, y, z});
                if constexpr (std::is_floating_point_v<T>) {
                    ASSERT_NEAR(*pixel, static_cast<T>(expected), 1e-5);
                } else {
                    ASSERT_LE(std::fabs(static_cast<long double>(*pixel) - expected), 0.5L + 1e-12L)
                        << x << ' ' << y << ' ' << z;
                }
            }
        }
    }
}

TEST(ImageResize, GivesTheDefinedValuesForEveryKindOfScaling)
{
    const std::vector<std::pair<kelp::Vector3<int>, kelp::Vector3<int>>> sizes{
        {{16, 12, 1}, {4, 3, 1}}, {{17, 13, 1}, {5, 4, 1}}, {{5, 4, 1}, {17, 13, 1}},
        {{7, 9, 1}, {11, 5, 1}},  {{6, 5, 4}, {3, 2, 3}},   {{3, 2, 2}, {5, 3, 7}},
        {{1, 1, 1}, {4, 4, 2}},   {{9, 1, 1}, {1, 1, 1}},   {{4, 4, 1}, {4, 4, 1}}};
    unsigned seed = 1;
    for (const auto& [from, to] : sizes) {
        compareWithDefinition<std::uint8_t>(kelp::MonoUInt8, from, to, seed++);
        compareWithDefinition<std::uint16_t>(kelp::MonoUInt16, from, to, seed++);
        compareWithDefinition<std::int32_t>(kelp::MonoInt32, from, to, seed++);
        compareWithDefinition<float>(kelp::MonoFloat, from, to, seed++);
    }
}

TEST(ImageResize, RoundsOnceAtTheEndAndHalvesGoUp)
{
    // Rounding after each axis would give 1 here: 0.5 and 0 become 1 and 0, then 0.5 becomes 1.
    const kelp::ImagePtr quarter =
        makeImage<std::uint8_t>(kelp::MonoUInt8, {2, 2, 1}, {1, 0, 0, 0});
    EXPECT_EQ(valuesOf<std::uint8_t>(*kelp::ImageTools::resize(quarter, {1, 1, 1}, mode)),
              (std::vector<std::uint8_t>{0}));
    const kelp::ImagePtr half = makeImage<std::uint8_t>(kelp::MonoUInt8, {2, 2, 1}, {1, 0, 0, 1});
    EXPECT_EQ(valuesOf<std::uint8_t>(*kelp::ImageTools::resize(half, {1, 1, 1}, mode)),
              (std::vector<std::uint8_t>{1}));
    const kelp::ImagePtr negative = makeImage<std::int8_t>(kelp::MonoInt8, {2, 1, 1}, {-1, 0});
    EXPECT_EQ(valuesOf<std::int8_t>(*kelp::ImageTools::resize(negative, {1, 1, 1}, mode)),
              (std::vector<std::int8_t>{0}));
}

TEST(ImageResize, SeesAHalfWhereTheRatioIsNoBinaryFraction)
{
    // 3 pixels to 2: (2 * 1 + 1 * 1) / 3 = 1 and (1 * 1 + 2 * 4) / 3 = 3.
    const kelp::ImagePtr thirds = makeImage<std::uint8_t>(kelp::MonoUInt8, {3, 1, 1}, {1, 1, 4});
    EXPECT_EQ(valuesOf<std::uint8_t>(*kelp::ImageTools::resize(thirds, {2, 1, 1}, mode)),
              (std::vector<std::uint8_t>{1, 3}));
    // 6 to 1: the mean of 0 0 0 1 1 1 is exactly one half, whatever 1/6 is in binary.
    const kelp::ImagePtr sixths =
        makeImage<std::uint8_t>(kelp::MonoUInt8, {6, 1, 1}, {0, 0, 0, 1, 1, 1});
    EXPECT_EQ(valuesOf<std::uint8_t>(*kelp::ImageTools::resize(sixths, {1, 1, 1}, mode)),
              (std::vector<std::uint8_t>{1}));
}

TEST(ImageResize, LinearGrowthKeepsTheOutermostPixels)
{
    const kelp::ImagePtr two = makeImage<std::uint8_t>(kelp::MonoUInt8, {2, 1, 1}, {0, 100});
    EXPECT_EQ(valuesOf<std::uint8_t>(*kelp::ImageTools::resize(two, {4, 1, 1}, mode)),
              (std::vector<std::uint8_t>{0, 25, 75, 100}));
}

TEST(ImageResize, ScalesTheSpacing)
{
    const kelp::ImagePtr image =
        kelp::Image::create(kelp::MonoUInt8, {512, 496, 1}, {0.01, 0.004, 0.1});
    const kelp::ImagePtr coarse = kelp::ImageTools::resize(image, {32, 62, 1}, mode);
    EXPECT_DOUBLE_EQ(coarse->getSpacing().x, 0.16);
    EXPECT_DOUBLE_EQ(coarse->getSpacing().y, 0.032);
    EXPECT_DOUBLE_EQ(coarse->getSpacing().z, 0.1);
}

TEST(ImageResize, AConstantImageStaysConstant)
{
    for (const int size : {1, 2, 3, 7, 100, 496}) {
        const kelp::ImagePtr image = makeImage<std::uint8_t>(kelp::MonoUInt8, {97, 1, 1},
                                                             std::vector<std::uint8_t>(97, 255));
        EXPECT_EQ(valuesOf<std::uint8_t>(*kelp::ImageTools::resize(image, {size, 1, 1}, mode)),
                  std::vector<std::uint8_t>(static_cast<std::size_t>(size), 255));
    }
}

TEST(ImageResize, AMaskOfOnesExcludesACellFromHalfOfItsAreaOn)
{
    // The mask's excluded bytes are 1, and bytes are rounded: a coarse cell of which less than half
    // is excluded is used, from one half on it is not. No value beside 0 and 1 appears.
    std::vector<std::uint8_t> mask(64, 0);
    std::fill(mask.begin() + 16, mask.begin() + 16 + 7, std::uint8_t{1});
    std::fill(mask.begin() + 32, mask.begin() + 32 + 8, std::uint8_t{1});
    std::fill(mask.begin() + 48, mask.end(), std::uint8_t{1});
    const kelp::ImagePtr image = makeImage<std::uint8_t>(kelp::MonoUInt8, {64, 1, 1}, mask);
    EXPECT_EQ(valuesOf<std::uint8_t>(*kelp::ImageTools::resize(image, {4, 1, 1}, mode)),
              (std::vector<std::uint8_t>{0, 0, 1, 1}));
}

TEST(ImageResize, AMaskOf255ExcludesACellFromOneByteIn510On)
{
    std::vector<std::uint8_t> mask(1024, 0);
    mask[0] = 255;
    mask[512] = 255;
    mask[513] = 255;
    const kelp::ImagePtr image = makeImage<std::uint8_t>(kelp::MonoUInt8, {1024, 1, 1}, mask);
    EXPECT_EQ(valuesOf<std::uint8_t>(*kelp::ImageTools::resize(image, {2, 1, 1}, mode)),
              (std::vector<std::uint8_t>{0, 1}));
}

TEST(ImageResize, NearestNeighbourTakesThePixelUnderTheCentre)
{
    const kelp::ImagePtr image =
        makeImage<std::uint16_t>(kelp::MonoUInt16, {4, 1, 1}, {10, 20, 30, 40});
    EXPECT_EQ(valuesOf<std::uint16_t>(*kelp::ImageTools::resize(
                  image, {2, 1, 1}, InterpolationModes::NearestNeighbour)),
              (std::vector<std::uint16_t>{20, 40}));
    EXPECT_EQ(valuesOf<std::uint16_t>(*kelp::ImageTools::resize(
                  image, {8, 1, 1}, InterpolationModes::NearestNeighbour)),
              (std::vector<std::uint16_t>{10, 10, 20, 20, 30, 30, 40, 40}));
}

TEST(ImageResize, RefusesWhatItCannotResize)
{
    const kelp::ImagePtr grey = kelp::Image::create(kelp::MonoUInt8, {2, 2, 1});
    const kelp::ImagePtr color = kelp::Image::create(kelp::ColorRGBA8, {2, 2, 1});
    const kelp::ImagePtr empty = kelp::Image::create(kelp::MonoUInt8, {0, 2, 1});
    EXPECT_THROW(kelp::ImageTools::resize({}, {1, 1, 1}, mode), kelp::Assertion);
    EXPECT_THROW(kelp::ImageTools::resize(empty, {1, 1, 1}, mode), kelp::Assertion);
    EXPECT_THROW(kelp::ImageTools::resize(grey, {0, 1, 1}, mode), kelp::Assertion);
    EXPECT_THROW(kelp::ImageTools::resize(grey, {1, 1, -1}, mode), kelp::Assertion);
    EXPECT_THROW(kelp::ImageTools::resize(color, {1, 1, 1}, mode), kelp::NotImplemented);
}

} // namespace
