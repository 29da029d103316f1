#include "DeviceFill.h"

#include "TestExport.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>

namespace kelp::oct {
namespace {

using Pixels = std::function<int(int row, int column)>;

constexpr int width = 40;
constexpr int height = 30;

kelp::ImagePtr makeImage(const Pixels& pixel)
{
    const kelp::ImagePtr image = kelp::Image::create(kelp::MonoUInt8, {width, height, 1});
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            image->pixels<std::uint8_t>()[row * width + column] =
                static_cast<std::uint8_t>(pixel(row, column));
        }
    }
    return image;
}

int at(const kelp::ImagePtr& image, int row, int column)
{
    return image->pixels<std::uint8_t>()[row * width + column];
}

bool sameBytes(const kelp::ImagePtr& a, const kelp::ImagePtr& b)
{
    return std::memcmp(a->pixels<std::uint8_t>(), b->pixels<std::uint8_t>(),
                       a->getNumberOfPixels()) == 0;
}

TEST(DeviceFill, HandsAnImageWithoutWhiteOnItsBorderThroughShared)
{
    const kelp::ImagePtr image =
        makeImage([](int row, int column) { return (row * 9 + column) % 255; });
    EXPECT_EQ(withoutDeviceFill(image), image);
}

TEST(DeviceFill, TurnsTheTriangleOfATiltedScanBlack)
{
    const auto inTriangle = [](int row, int column) { return column + 2 * row < 20; };
    const kelp::ImagePtr image =
        makeImage([&](int row, int column) { return inTriangle(row, column) ? 255 : 100; });
    const kelp::ImagePtr mended = withoutDeviceFill(image);
    ASSERT_NE(mended, image);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            EXPECT_EQ(at(mended, row, column), inTriangle(row, column) ? 0 : 100);
        }
    }
    EXPECT_EQ(at(image, 0, 0), 255) << "the scan's own image stays";
}

TEST(DeviceFill, FindsFillOnEveryBorder)
{
    const auto bands = [](int row, int column) {
        return row < 2 || row >= height - 2 || column < 2 || column >= width - 2;
    };
    const kelp::ImagePtr image =
        makeImage([&](int row, int column) { return bands(row, column) ? 255 : 7; });
    const kelp::ImagePtr mended = withoutDeviceFill(image);
    EXPECT_TRUE(sameBytes(
        mended, makeImage([&](int row, int column) { return bands(row, column) ? 0 : 7; })));
}

TEST(DeviceFill, NeedsFiftyPixels)
{
    for (const int pixels : {49, 50}) {
        const kelp::ImagePtr image = makeImage([&](int row, int column) {
            return row < 10 && row * 5 + column < pixels && column < 5 ? 255 : 3;
        });
        EXPECT_EQ(withoutDeviceFill(image) == image, pixels == 49) << pixels;
    }
}

TEST(DeviceFill, CountsEachAreaForItself)
{
    // Two areas of 30 pixels on the same border.
    const kelp::ImagePtr image = makeImage([](int row, int column) {
        return row < 5 && (column < 6 || column >= width - 6) ? 255 : 3;
    });
    EXPECT_EQ(withoutDeviceFill(image), image);
}

TEST(DeviceFill, DiagonalNeighboursDoNotConnect)
{
    // A chain of squares of 25 pixels, each touching the next at a corner only.
    const kelp::ImagePtr image =
        makeImage([](int row, int column) { return row / 5 == column / 5 ? 255 : 3; });
    EXPECT_EQ(withoutDeviceFill(image), image);
}

TEST(DeviceFill, LeavesAreasInsideTheImageAlone)
{
    const kelp::ImagePtr image = makeImage([](int row, int column) {
        return row > 0 && row < height - 1 && column > 0 && column < width - 1 ? 255 : 3;
    });
    EXPECT_EQ(withoutDeviceFill(image), image);
}

TEST(DeviceFill, NeedsTheFullValue)
{
    const kelp::ImagePtr image = makeImage([](int row, int) { return row < 10 ? 254 : 3; });
    EXPECT_EQ(withoutDeviceFill(image), image);
}

TEST(DeviceFill, LeavesOtherPixelTypesAlone)
{
    const kelp::ImagePtr deep =
        makeImage([](int, int) { return 255; })->convertTo(kelp::MonoUInt16);
    EXPECT_EQ(withoutDeviceFill(deep), deep);
    EXPECT_TRUE(withoutDeviceFill({}).isNull());
}

TEST(DeviceFill, HandlesAnAllWhiteImageAndAreasOfOnePixelWidth)
{
    const kelp::ImagePtr white = makeImage([](int, int) { return 255; });
    EXPECT_TRUE(sameBytes(withoutDeviceFill(white), makeImage([](int, int) { return 0; })));
    const kelp::ImagePtr line =
        makeImage([](int row, int column) { return row == 0 || column == 0 ? 255 : 9; });
    EXPECT_TRUE(sameBytes(withoutDeviceFill(line), makeImage([](int row, int column) {
                              return row == 0 || column == 0 ? 0 : 9;
                          })));
}

TEST(DeviceFill, TakesTheFringeThatJpegLeavesWithIt)
{
    // Rows 0 to 5 of fill, a smeared edge, and ringing that two more rows cover.
    const int edge[] = {251, 244, 120, 60};
    const kelp::ImagePtr image = makeImage([&](int row, int) {
        return row < 6 ? 255 : row < 10 ? edge[row - 6] : 30;
    });
    EXPECT_TRUE(sameBytes(withoutDeviceFill(image),
                          makeImage([](int row, int) { return row < 10 ? 0 : 30; })));
}

TEST(DeviceFill, LeavesBrightTissueNextToCleanFillAlone)
{
    // A twentieth of what touches the fill is bright: no fringe.
    const auto pixel = [](int row, int column) {
        return row < 6 ? 255 : column % 20 == 0 ? 250 : 30;
    };
    const kelp::ImagePtr mended = withoutDeviceFill(makeImage(pixel));
    EXPECT_TRUE(sameBytes(
        mended, makeImage([&](int row, int column) { return row < 6 ? 0 : pixel(row, column); })));
}

TEST(DeviceFill, AFringeWithoutFillIsTissue)
{
    const kelp::ImagePtr image = makeImage([](int row, int) { return row < 10 ? 250 : 30; });
    EXPECT_EQ(withoutDeviceFill(image), image);
    // Saturated here and there, as the brightest tissue is.
    const kelp::ImagePtr speckled = makeImage([](int row, int column) {
        return row >= 10 ? 30 : column % 3 == 0 ? 255 : 245;
    });
    EXPECT_EQ(withoutDeviceFill(speckled), speckled);
}

TEST(DeviceFill, FindsAThinWedgeThatJpegBrokeIntoPieces)
{
    // No piece of 255 reaches fifty pixels.
    const kelp::ImagePtr image = makeImage([](int row, int column) {
        return row >= 3 ? 30 : column % 3 == 0 ? 249 : 255;
    });
    EXPECT_TRUE(sameBytes(withoutDeviceFill(image),
                          makeImage([](int row, int) { return row < 5 ? 0 : 30; })));
}

TEST(DeviceFill, CopesWithNoiseOfWhite)
{
    std::mt19937 random(7);
    const kelp::ImagePtr noise = makeImage([&](int, int) { return random() % 2 == 0 ? 255 : 20; });
    const kelp::ImagePtr mended = withoutDeviceFill(noise);
    ASSERT_NE(mended, noise) << "half of all pixels hang together in large areas";
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            EXPECT_TRUE(at(mended, row, column) == 0 ||
                        at(mended, row, column) == at(noise, row, column));
        }
    }
}

/// A tilted frame of speckle and bright bands, with white above, below and beside it.
struct TiltedBScan
{
    static constexpr int columns = 320;
    static constexpr int rows = 240;
    static constexpr std::uint8_t white = 255;

    QImage image{columns, rows, QImage::Format_Grayscale8};

    TiltedBScan()
    {
        std::mt19937 random(3);
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                const bool isBand = row % 60 < 12;
                const auto speckle = static_cast<int>(random() % 40);
                image.scanLine(row)[column] =
                    isFill(row, column) ? white
                                        : static_cast<std::uint8_t>((isBand ? 160 : 10) + speckle);
            }
        }
    }
    static bool isFill(int row, int column)
    {
        const int shift = 20 - column / 8;
        return row < shift || row >= rows + shift || isBeside(column);
    }
    static bool isBeside(int column) { return column == columns - 1; }
    /// Inside the image and so many pixels around.
    static bool isNearFill(int row, int column, int reach)
    {
        for (int r = std::max(0, row - reach); r <= std::min(rows - 1, row + reach); ++r) {
            for (int c = std::max(0, column - reach); c <= std::min(columns - 1, column + reach);
                 ++c) {
                if (isFill(r, c)) {
                    return true;
                }
            }
        }
        return false;
    }
    kelp::ImagePtr read(const QImage& grey) const
    {
        const kelp::ImagePtr result = kelp::Image::create(kelp::MonoUInt8, {columns, rows, 1});
        for (int row = 0; row < rows; ++row) {
            std::memcpy(result->pixels<std::uint8_t>() + row * columns, grey.constScanLine(row),
                        columns);
        }
        return result;
    }
    kelp::ImagePtr throughJpeg(int quality) const
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadWrite);
        QImageWriter writer(&buffer, "jpg");
        writer.setQuality(quality);
        EXPECT_TRUE(writer.write(image));
        return read(QImage::fromData(bytes).convertToFormat(QImage::Format_Grayscale8));
    }
};

TEST(DeviceFill, LeavesNoRimAndTakesNoTissueInJpegOfAnyQuality)
{
    const TiltedBScan bScan;
    for (const int quality : {60, 75, 85, 92, 98, 100}) {
        const kelp::ImagePtr smeared = bScan.throughJpeg(quality);
        const kelp::ImagePtr mended = withoutDeviceFill(smeared);
        int left = 0;
        int leftBeside = 0;
        int taken = 0;
        for (int row = 0; row < TiltedBScan::rows; ++row) {
            for (int column = 0; column < TiltedBScan::columns; ++column) {
                const int index = row * TiltedBScan::columns + column;
                const int value = mended->pixels<std::uint8_t>()[index];
                if (TiltedBScan::isFill(row, column)) {
                    (TiltedBScan::isBeside(column) ? leftBeside : left) += value > 0 ? 1 : 0;
                } else if (!TiltedBScan::isNearFill(row, column, 3)) {
                    taken += value == smeared->pixels<std::uint8_t>()[index] ? 0 : 1;
                }
            }
        }
        EXPECT_EQ(left, 0) << "quality " << quality;
        // In a strongly reduced file a white column of one pixel does not stay white.
        if (quality >= 85) {
            EXPECT_EQ(leftBeside, 0) << "quality " << quality;
        }
        EXPECT_EQ(taken, 0) << "quality " << quality;
    }
}

TEST(DeviceFill, IsExactToThePixelInLosslessImages)
{
    const TiltedBScan bScan;
    const kelp::ImagePtr mended = withoutDeviceFill(bScan.read(bScan.image));
    for (int row = 0; row < TiltedBScan::rows; ++row) {
        for (int column = 0; column < TiltedBScan::columns; ++column) {
            ASSERT_EQ(mended->pixels<std::uint8_t>()[row * TiltedBScan::columns + column],
                      TiltedBScan::isFill(row, column) ? 0
                                                       : bScan.image.constScanLine(row)[column]);
        }
    }
}

OCTScanPtr scanWithFillInTheSecondBScan()
{
    return test::makeTestScan(
        test::lineScan(width, height, 3, 0.0125, 0.1, [](int bScan, int row, int column) {
            return bScan == 1 && row < 4 ? 255 : (row * 3 + column) % 250;
        }));
}

TEST(DeviceFill, SharesTheImagesOfAScanThatHaveNone)
{
    const OCTScanPtr scan = scanWithFillInTheSecondBScan();
    const QList<kelp::ImagePtr> images = segmentationImages(*scan);
    ASSERT_EQ(images.size(), 3);
    EXPECT_EQ(images[0], scan->getBScan(0)->getImage());
    EXPECT_NE(images[1], scan->getBScan(1)->getImage());
    EXPECT_EQ(at(images[1], 0, 0), 0);
    EXPECT_EQ(images[2], scan->getBScan(2)->getImage());
    EXPECT_EQ(at(scan->getBScan(1)->getImage(), 0, 0), 255);
}

TEST(DeviceFill, ScalesAScanAsItsBScansDo)
{
    const OCTScanPtr scan = scanWithFillInTheSecondBScan();
    const QList<kelp::ImagePtr> coarse = segmentationImagesCoarse(*scan, 0.25, 0.5);
    const QList<kelp::ImagePtr> plain = scan->getBScanImagesCoarse(0.25, 0.5);
    ASSERT_EQ(coarse.size(), 3);
    EXPECT_EQ(coarse[0]->getDimensions(), plain[0]->getDimensions());
    EXPECT_EQ(coarse[0]->getSpacing(), plain[0]->getSpacing());
    EXPECT_TRUE(sameBytes(coarse[0], plain[0]));
    EXPECT_TRUE(sameBytes(coarse[2], plain[2]));
    EXPECT_EQ(coarse[1]->getDimensions(), plain[1]->getDimensions());
    EXPECT_EQ(coarse[1]->getSpacing(), plain[1]->getSpacing());
    EXPECT_EQ(coarse[1]->pixels<std::uint8_t>()[0], 0);
    EXPECT_EQ(plain[1]->pixels<std::uint8_t>()[0], 255);
}

} // namespace
} // namespace kelp::oct
