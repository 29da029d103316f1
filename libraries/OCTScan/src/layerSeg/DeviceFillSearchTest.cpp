// The search for the device's fill against its rule written down plainly, and what it costs.

#include "DeviceFill.h"
#include "TestExport.h"
#include "TestPhantomChains.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <ctime>
#include <functional>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace kelp::oct {
namespace {

kelp::ImagePtr makeImage(int width, int height, const std::function<int(int row, int column)>& grey)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt8, {width, height, 1});
    auto* pixel = image->pixels<std::uint8_t>();
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            *pixel++ = static_cast<std::uint8_t>(grey(row, column));
        }
    }
    return image;
}

std::vector<std::uint8_t> bytesOf(const kelp::ImagePtr& image)
{
    const auto* const pixels = image->pixels<std::uint8_t>();
    return {pixels, pixels + image->getNumberOfPixels()};
}

/// The rule as one would tell it, with whole sets of pixels and no thought of time.
class PlainRule
{
public:
    using Pixels = std::vector<bool>;

    explicit PlainRule(const kelp::ImagePtr& image)
        : m_grey(bytesOf(image)), m_width(image->getWidth()), m_height(image->getHeight()),
          m_none(m_grey.size(), false)
    {
        const Pixels smeared = areasOfAtLeast(240);
        m_isSmeared = brightShareBeside(smeared) > 0.1;
        m_fill = m_isSmeared ? withNeighbours(withNeighbours(smeared)) : areasOfAtLeast(255);
        for (std::size_t i = 0; i < m_grey.size(); ++i) {
            m_ringHoldsBright |= m_isSmeared && m_fill[i] && !smeared[i] && m_grey[i] >= 240;
        }
    }

    std::vector<std::uint8_t> imageWithoutFill() const
    {
        std::vector<std::uint8_t> result = m_grey;
        for (std::size_t i = 0; i < result.size(); ++i) {
            result[i] = m_fill[i] ? 0 : result[i];
        }
        return result;
    }
    bool hasFill() const { return m_fill != m_none; }
    bool isSmeared() const { return m_isSmeared; }
    /// A ring around smeared fill reaches into a bright area that is none.
    bool ringHoldsBright() const { return m_ringHoldsBright; }

private:
    std::vector<std::size_t> neighboursOf(std::size_t pixel) const
    {
        const int row = static_cast<int>(pixel) / m_width;
        const int column = static_cast<int>(pixel) % m_width;
        std::vector<std::size_t> result;
        for (const auto& [r, c] : {std::pair{row - 1, column}, std::pair{row + 1, column},
                                   std::pair{row, column - 1}, std::pair{row, column + 1}}) {
            if (r >= 0 && r < m_height && c >= 0 && c < m_width) {
                result.push_back(static_cast<std::size_t>(r * m_width + c));
            }
        }
        return result;
    }
    Pixels withNeighbours(const Pixels& set) const
    {
        Pixels grown = set;
        for (std::size_t i = 0; i < set.size(); ++i) {
            if (!set[i]) {
                continue;
            }
            for (const std::size_t neighbour : neighboursOf(i)) {
                grown[neighbour] = true;
            }
        }
        return grown;
    }
    Pixels areaAround(std::size_t seed, int lowest) const
    {
        Pixels area = m_none;
        area[seed] = true;
        std::vector<std::size_t> reached{seed};
        for (std::size_t next = 0; next < reached.size(); ++next) {
            for (const std::size_t neighbour : neighboursOf(reached[next])) {
                if (!area[neighbour] && m_grey[neighbour] >= lowest) {
                    area[neighbour] = true;
                    reached.push_back(neighbour);
                }
            }
        }
        return area;
    }
    Pixels areasOfAtLeast(int lowest) const
    {
        Pixels fill = m_none;
        for (std::size_t seed = 0; seed < m_grey.size(); ++seed) {
            const bool isOnBorder = neighboursOf(seed).size() < 4;
            if (!isOnBorder || m_grey[seed] < lowest || fill[seed]) {
                continue;
            }
            const Pixels area = areaAround(seed, lowest);
            int size = 0;
            int white = 0;
            for (std::size_t i = 0; i < area.size(); ++i) {
                size += area[i] ? 1 : 0;
                white += area[i] && m_grey[i] == 255 ? 1 : 0;
            }
            for (std::size_t i = 0; i < area.size(); ++i) {
                fill[i] = fill[i] || (area[i] && size >= 50 && 2 * white >= size);
            }
        }
        return fill;
    }
    /// Of the steps from a white pixel of the fill to one that is not white.
    double brightShareBeside(const Pixels& fill) const
    {
        int steps = 0;
        int bright = 0;
        for (std::size_t i = 0; i < fill.size(); ++i) {
            for (const std::size_t neighbour : neighboursOf(i)) {
                if (fill[i] && m_grey[i] == 255 && m_grey[neighbour] != 255) {
                    ++steps;
                    bright += m_grey[neighbour] >= 240 ? 1 : 0;
                }
            }
        }
        return steps > 0 ? static_cast<double>(bright) / steps : 0.0;
    }

    std::vector<std::uint8_t> m_grey;
    int m_width;
    int m_height;
    Pixels m_none;
    Pixels m_fill;
    bool m_isSmeared = false;
    bool m_ringHoldsBright = false;
};

/// Rectangles of few grey values, plain, checked or speckled, many of them at the border.
kelp::ImagePtr patchwork(std::mt19937& random)
{
    const auto upTo = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
    const auto grey = [&] { return std::array{20, 239, 240, 248, 254, 255, 255}[upTo(7)]; };
    const int width = 1 + upTo(24);
    const int height = 1 + upTo(20);
    const int ground = grey();
    const kelp::ImagePtr image = makeImage(width, height, [&](int, int) { return ground; });
    auto* const pixels = image->pixels<std::uint8_t>();
    for (int patches = upTo(7); patches > 0; --patches) {
        const int left = upTo(2) == 0 ? 0 : upTo(width);
        const int top = upTo(3) == 0 ? 0 : upTo(height);
        const int right = std::min(width, left + 1 + upTo(width));
        const int bottom = std::min(height, top + 1 + upTo(height));
        const int first = grey();
        const int second = grey();
        const int pattern = upTo(4);
        for (int row = top; row < bottom; ++row) {
            for (int column = left; column < right; ++column) {
                const bool isFirst = pattern < 2    ? true
                                     : pattern == 2 ? (row + column) % 2 == 0
                                                    : upTo(4) > 0;
                pixels[row * width + column] = static_cast<std::uint8_t>(isFirst ? first : second);
            }
        }
    }
    return image;
}

TEST(DeviceFillSearch, FindsWhatTheRuleSaysInAnyImage)
{
    std::mt19937 random(5);
    int clean = 0;
    int smeared = 0;
    int ringsIntoBright = 0;
    int without = 0;
    for (int i = 0; i < 3000; ++i) {
        const kelp::ImagePtr image = patchwork(random);
        const PlainRule rule(image);
        const kelp::ImagePtr mended = withoutDeviceFill(image);
        ASSERT_EQ(bytesOf(mended), rule.imageWithoutFill()) << "image " << i;
        ASSERT_EQ(mended == image, !rule.hasFill()) << "image " << i;
        without += rule.hasFill() ? 0 : 1;
        clean += rule.hasFill() && !rule.isSmeared() ? 1 : 0;
        smeared += rule.isSmeared() ? 1 : 0;
        ringsIntoBright += rule.ringHoldsBright() ? 1 : 0;
    }
    // Every way through the rule is taken often.
    EXPECT_GT(without, 100);
    EXPECT_GT(clean, 100);
    EXPECT_GT(smeared, 100);
    EXPECT_GT(ringsIntoBright, 20);
}

TEST(DeviceFillSearch, ItsRingsReachIntoABrightAreaThatIsNoFill)
{
    // Fill with a smeared edge in the first seven rows, and bright tissue from the ninth on.
    const auto grey = [](int row, int column) {
        return row < 6 ? 255 : row == 6 ? 250 : row >= 8 && column < 10 ? 245 : 60;
    };
    const kelp::ImagePtr mended = withoutDeviceFill(makeImage(30, 20, grey));
    EXPECT_EQ(bytesOf(mended), bytesOf(makeImage(30, 20, [&](int row, int column) {
                  return row < 9 ? 0 : grey(row, column);
              })));
}

TEST(DeviceFillSearch, LooksForNoFillOnceTheRunIsToStop)
{
    const OCTScanPtr scan = test::makeTestScan(test::lineScan(
        40, 30, 2, 0.0125, 0.1, [](int, int row, int) { return row < 5 ? 255 : 9; }));
    std::atomic<bool> abortFlag = false;
    EXPECT_NE(segmentationImages(*scan, &abortFlag).first(), scan->getBScan(0)->getImage());
    const QList<kelp::ImagePtr> coarse = segmentationImagesCoarse(*scan, 0.5, 0.5, &abortFlag);
    EXPECT_EQ(bytesOf(coarse.first())[0], 0);
    abortFlag = true;
    const QList<kelp::ImagePtr> images = segmentationImages(*scan, &abortFlag);
    ASSERT_EQ(images.size(), 2);
    EXPECT_EQ(images[0], scan->getBScan(0)->getImage());
    EXPECT_EQ(images[1], scan->getBScan(1)->getImage());
    const QList<kelp::ImagePtr> left = segmentationImagesCoarse(*scan, 0.5, 0.5, &abortFlag);
    ASSERT_EQ(left.size(), 2);
    EXPECT_EQ(bytesOf(left.first())[0], 255);
}

/// On images of the size that devices write, in seconds of the processor, which other programs do
/// not lengthen as they do those of the wall.
struct DeviceFillCost : test::PhantomChains
{
    static constexpr int width = 768;
    static constexpr int height = 496;
    /// All white costs about as much as anything can: all pixels are fill, and are looked at again
    /// for smeared edges. Running through an area anew from each of its border pixels takes
    /// hundreds of times as long.
    static constexpr double mostOfWhite = 20.0;

    static double seconds(const kelp::ImagePtr& image)
    {
        std::clock_t least = std::numeric_limits<std::clock_t>::max();
        for (int repetition = 0; repetition < 3; ++repetition) {
            const std::clock_t start = std::clock();
            withoutDeviceFill(image);
            least = std::min(least, std::clock() - start);
        }
        return static_cast<double>(least) / CLOCKS_PER_SEC;
    }
    static double secondsOfWhite()
    {
        return seconds(makeImage(width, height, [](int, int) { return 255; }));
    }
    static void expectBounded(const char* name, const std::function<int(int, int)>& grey)
    {
        EXPECT_LT(seconds(makeImage(width, height, grey)), mostOfWhite * secondsOfWhite()) << name;
    }
};

TEST_F(DeviceFillCost, IsThatOfAWhiteImageWhateverTheImageHolds)
{
    std::mt19937 random(3);
    const auto snake = [](int along, int across, int end) {
        return along % 2 == 0 || (along % 4 == 1 ? across == end - 1 : across == 0);
    };
    expectBounded("bright", [](int, int) { return 245; });
    expectBounded("bright noise", [&](int, int) { return 240 + static_cast<int>(random() % 16); });
    expectBounded("checked", [](int row, int column) { return (row + column) % 2 ? 240 : 255; });
    expectBounded("a third white",
                  [](int row, int column) { return (row + column) % 3 ? 240 : 255; });
    expectBounded("upright snake",
                  [&](int row, int column) { return snake(column, row, height) ? 245 : 10; });
    expectBounded("lying snake",
                  [&](int row, int column) { return snake(row, column, width) ? 245 : 10; });
    expectBounded("comb", [](int row, int column) {
        return column % 2 == 0 || row == height / 2 ? 245 : 10;
    });
}

TEST_F(DeviceFillCost, IsThatOfAWhiteImageInABScanShownDarkOnWhite)
{
    phantom::Options options = test::smallPhantom(phantom::Pattern::Section, phantom::Kind::Normal);
    options.aScans = width;
    options.rows = height;
    make(options);
    const std::vector<std::uint8_t> grey = bytesOf(segmentation->getOCT()->getBScan(0)->getImage());
    ASSERT_EQ(grey.size(), static_cast<std::size_t>(width) * height);
    const auto inverted = [&](int row, int column) {
        return 255 - grey[static_cast<std::size_t>(row) * width + static_cast<std::size_t>(column)];
    };
    // Most of it is bright, and the bright part hangs together and touches the border everywhere.
    EXPECT_GT(std::count_if(grey.begin(), grey.end(), [](int value) { return value <= 15; }),
              width * height / 4);
    expectBounded("dark on white", inverted);
}

} // namespace
} // namespace kelp::oct
