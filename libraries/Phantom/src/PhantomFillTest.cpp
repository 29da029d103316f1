#include "Phantom.h"

#include <QImage>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

namespace kelp::phantom {

namespace {

constexpr Pattern patterns[] = {Pattern::Volume, Pattern::Section, Pattern::Circle, Pattern::Star};
constexpr Kind kinds[] = {Kind::Normal, Kind::Drusen, Kind::Mouse};
constexpr int white = 255;

Options small()
{
    Options options;
    options.aScans = 96;
    options.rows = 200;
    options.bScans = 4;
    options.localizerSize = 32;
    options.fill = true;
    return options;
}

/// The B-scans of one export, which is gone when they are read.
std::vector<QImage> bScansOf(const Options& options)
{
    const QTemporaryDir folder;
    const Export written = writeExport(folder.path(), options);
    std::vector<QImage> images;
    for (int image = 1; image < written.imagePaths.size(); ++image) {
        images.push_back(
            QImage(written.imagePaths[image]).convertToFormat(QImage::Format_Grayscale8));
    }
    return images;
}

Options withoutFill(Options options)
{
    options.fill = false;
    return options;
}

int at(const QImage& image, int row, int column)
{
    return image.constScanLine(row)[column];
}

/// The rows of white from the upper border (direction 1) or the lower one (-1) on.
int whiteRows(const QImage& image, int column, int direction)
{
    int count = 0;
    while (count < image.height() &&
           at(image, direction > 0 ? count : image.height() - 1 - count, column) == white) {
        ++count;
    }
    return count;
}

bool isWhole(const QImage& image, int column)
{
    return whiteRows(image, column, 1) == image.height();
}

} // namespace

TEST(PhantomFill, ChangesNothingButWhatItPaintsWhite)
{
    for (const Pattern pattern : patterns) {
        for (const Kind kind : kinds) {
            Options options = small();
            options.pattern = pattern;
            options.kind = kind;
            const QTemporaryDir folder;
            const Export filled = describeExport(folder.path(), options);
            const std::vector<QImage> with = bScansOf(options);
            const std::vector<QImage> without = bScansOf(withoutFill(options));
            ASSERT_EQ(with.size(), without.size());
            ASSERT_EQ(filled.fillPixels.size(), with.size());
            for (std::size_t b = 0; b < with.size(); ++b) {
                int changed = 0;
                int alreadyWhite = 0;
                for (int row = 0; row < options.rows; ++row) {
                    for (int column = 0; column < options.aScans; ++column) {
                        const int before = at(without[b], row, column);
                        const int after = at(with[b], row, column);
                        changed += after != before ? 1 : 0;
                        alreadyWhite += before == white ? 1 : 0;
                        ASSERT_TRUE(after == before || after == white);
                    }
                }
                EXPECT_LE(changed, filled.fillPixels[b]);
                EXPECT_GE(changed + alreadyWhite, filled.fillPixels[b]);
            }
        }
    }
}

TEST(PhantomFill, LeavesTheTruthAsItIs)
{
    const Options options = small();
    const Export with = describeExport(".", options);
    const Export without = describeExport(".", withoutFill(options));
    ASSERT_EQ(with.surfaces.size(), without.surfaces.size());
    for (int i = 0; i < with.surfaces.size(); ++i) {
        EXPECT_EQ(with.surfaces[i].rows, without.surfaces[i].rows);
    }
    EXPECT_THAT(without.fillPixels, testing::Each(0));
}

TEST(PhantomFill, KeepsAwayFromTheRetinaButForTwoColumnsBesideIt)
{
    for (const int rows : {160, 496}) {
        for (const Kind kind : kinds) {
            Options options = small();
            options.rows = rows;
            options.kind = kind;
            options.noise = 0.0;
            const Export phantom = describeExport(".", options);
            const std::vector<QImage> images = bScansOf(options);
            for (std::size_t b = 0; b < images.size(); ++b) {
                int missing = 0;
                for (int column = 0; column < options.aScans; ++column) {
                    if (isWhole(images[b], column)) {
                        ++missing;
                        EXPECT_TRUE(column < 2 || column >= options.aScans - 2);
                        continue;
                    }
                    const auto x = static_cast<std::size_t>(column);
                    EXPECT_GE(phantom.surfaces.front().rows[b][x],
                              whiteRows(images[b], column, 1) + 9);
                    EXPECT_LE(phantom.surfaces.back().rows[b][x],
                              rows - whiteRows(images[b], column, -1) - 9);
                }
                EXPECT_LE(missing, 2);
            }
        }
    }
}

TEST(PhantomFill, HasStraightEdgesAboveBelowAndBesideThatDifferFromBScanToBScan)
{
    Options options = small();
    options.aScans = 768;
    options.rows = 496;
    options.bScans = 40;
    options.noise = 0.0;
    const std::vector<QImage> images = bScansOf(options);
    const Export phantom = describeExport(".", options);
    std::set<int> amounts;
    int above = 0;
    int below = 0;
    int beside = 0;
    int crossing = 0;
    for (std::size_t b = 0; b < images.size(); ++b) {
        std::vector<int> shifts;
        for (int column = 0; column < options.aScans; ++column) {
            if (isWhole(images[b], column)) {
                ++beside;
                continue;
            }
            shifts.push_back(whiteRows(images[b], column, 1) - whiteRows(images[b], column, -1));
        }
        // On a line every place lies within a row of the straight way between the ends.
        const double slope =
            static_cast<double>(shifts.back() - shifts.front()) / (shifts.size() - 1.0);
        for (std::size_t x = 0; x < shifts.size(); ++x) {
            EXPECT_NEAR(shifts[x], shifts.front() + slope * static_cast<double>(x), 1.01);
        }
        const auto [least, most] = std::minmax_element(shifts.begin(), shifts.end());
        above += *most > 0 ? 1 : 0;
        below += *least < 0 ? 1 : 0;
        crossing += *most > 0 && *least < 0 ? 1 : 0;
        amounts.insert(phantom.fillPixels[b]);
        EXPECT_GE(phantom.fillPixels[b], 4000);
        EXPECT_LE(phantom.fillPixels[b], 36000);
    }
    EXPECT_GE(above, 10);
    EXPECT_GE(below, 10);
    EXPECT_GE(beside, 10);
    EXPECT_GE(crossing, 10);
    EXPECT_GE(amounts.size(), 38U);
}

TEST(PhantomFill, HasAFringeInJpegFiles)
{
    Options options = small();
    options.imageFormat = "jpg";
    const std::vector<QImage> smeared = bScansOf(options);
    options.imageFormat = "png";
    const std::vector<QImage> clean = bScansOf(options);
    int fill = 0;
    int fringe = 0;
    for (std::size_t b = 0; b < clean.size(); ++b) {
        for (int row = 0; row < options.rows; ++row) {
            for (int column = 0; column < options.aScans; ++column) {
                if (at(clean[b], row, column) == white) {
                    ++fill;
                    fringe += at(smeared[b], row, column) == white ? 0 : 1;
                }
            }
        }
    }
    EXPECT_GT(fringe, fill / 100);
    EXPECT_LT(fringe, fill / 2);
}

TEST(PhantomFill, NeedsRoomAboveAndBelowTheRetina)
{
    Options options = small();
    options.rows = 159;
    EXPECT_EQ(problemWith(options).toStdString(),
              "The device's fill needs at least 160 rows, not 159.");
    EXPECT_EQ(problemWith(withoutFill(options)), QString());
    options.rows = 160;
    EXPECT_EQ(problemWith(options), QString());
    for (std::uint64_t seed = 0; seed < 25; ++seed) {
        options.seed = seed;
        for (const Kind kind : kinds) {
            options.kind = kind;
            // One pixel of a hundred.
            EXPECT_THAT(describeExport(".", options).fillPixels,
                        testing::Each(testing::Ge(options.rows * options.aScans / 100)));
        }
    }
}

} // namespace kelp::phantom
