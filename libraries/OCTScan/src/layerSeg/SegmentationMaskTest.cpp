#include "SegmentationMask.h"

#include "SegmentationTestTools.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>

using namespace kelp::oct;
using namespace kelp::oct::test;
using kelp::Assertion;

namespace {

constexpr char prefix[] = "OCTScan/src/layerSeg/SegmentationMask::kelp::oct::SegmentationMask::";

std::vector<int> bytesOf(const MaskMatrix& mask)
{
    return {mask.begin(), mask.end()};
}

int countSet(const SegmentationMask& mask)
{
    const std::vector<int> bytes = bytesOf(*mask.getMaskMatrix());
    return static_cast<int>(std::count(bytes.begin(), bytes.end(), 1));
}

/// B-scans that run obliquely and lie obliquely to each other.
TestScan obliqueScan(int aScans, int bScans)
{
    TestScan contents = lineScan(aScans, 4, bScans);
    for (int b = 0; b < bScans; ++b) {
        for (int a = 0; a < aScans; ++a) {
            contents.positions[b][a] = {1.0 + 0.01 * a - 0.03 * b, 5.0 + 0.004 * a - 0.1 * b};
        }
    }
    return contents;
}

TestScan circleScan(int aScans)
{
    TestScan contents = lineScan(aScans, 4, 1);
    contents.pattern = "Circular BScan";
    for (int a = 0; a < aScans; ++a) {
        const double angle = 2.0 * M_PI * a / aScans;
        contents.positions[0][a] = {3.0 + 1.7 * std::cos(angle), 4.0 + 1.7 * std::sin(angle)};
    }
    return contents;
}

TEST(SegmentationMask, HasARowPerBScanAndAColumnPerAScan)
{
    const SegmentationMask mask(makeTestScan(lineScan(7, 4, 3)));
    EXPECT_EQ(mask.getMaskMatrix()->rows, 3U);
    EXPECT_EQ(mask.getMaskMatrix()->columns, 7U);
    EXPECT_EQ(countSet(mask), 0);
    EXPECT_TRUE(mask.getPolygons().isEmpty());
}

TEST(SegmentationMask, LoadsItsScan)
{
    const OCTScanPtr scan = makeUnloadedTestScan(lineScan(5, 4, 2));
    const SegmentationMask mask(scan);
    EXPECT_TRUE(scan->isLoaded());
    EXPECT_EQ(mask.getMaskMatrix()->rows, 2U);
}

TEST(SegmentationMask, ReachesHalfABScanDistanceBeyondTheOuterBScans)
{
    // From the lower left to the upper right, as the device scans.
    const SegmentationMask mask(makeTestScan(obliqueScan(6, 3)));
    const float halfSpacing = 0.5F * (5.0F - static_cast<float>(5.0 - 0.1));
    QRectF expected;
    expected.setCoords(static_cast<float>(1.0 - 0.06), static_cast<float>(5.0 - 0.2) - halfSpacing,
                       static_cast<float>(1.0 + 0.05),
                       static_cast<float>(5.0 + 0.02) + halfSpacing);
    EXPECT_EQ(mask.getBoundingRect(), expected);
}

TEST(SegmentationMask, OfOneBScanHasARectangleWithoutHeight)
{
    TestScan contents = lineScan(5, 4, 1);
    contents.pattern = "Single BScan";
    const SegmentationMask mask(makeTestScan(contents));
    EXPECT_EQ(mask.getBoundingRect().height(), 0.0);
    EXPECT_FLOAT_EQ(static_cast<float>(mask.getBoundingRect().width()), 0.05F);
}

TEST(SegmentationMask, ExcludesTheAScansInsideAPolygon)
{
    // A-scans at x = 0 to 0.05, B-scans at y = 0, 0.1, 0.2.
    SegmentationMask mask(makeTestScan(lineScan(5, 4, 3)));
    mask.addPolygon(makeRectangle(0.01, 0.05, 0.03, 0.15));
    EXPECT_THAT(bytesOf(*mask.getMaskMatrix()),
                testing::ElementsAre(0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(mask.getPolygons().size(), 1);
    EXPECT_THAT(*mask.getMaskRow(1), testing::ElementsAre(false, true, true, false, false));
}

TEST(SegmentationMask, TestsTheTruePositionOfEveryAScan)
{
    std::mt19937 random(20);
    std::uniform_real_distribution<double> x(0.5, 5.0);
    std::uniform_real_distribution<double> y(2.0, 6.0);
    for (const TestScan& contents : {obliqueScan(40, 12), circleScan(90)}) {
        const OCTScanPtr scan = makeTestScan(contents);
        for (int nrPoints = 0; nrPoints < 12; ++nrPoints) {
            QPolygonF polygon;
            for (int k = 0; k < nrPoints; ++k) {
                polygon.append(QPointF(x(random), y(random)));
                if (k % 3 == 0) {
                    polygon.append(polygon.last());
                }
            }
            SegmentationMask mask(scan);
            mask.addPolygon(polygon);
            for (unsigned i = 0; i < mask.getMaskMatrix()->rows; ++i) {
                for (unsigned j = 0; j < mask.getMaskMatrix()->columns; ++j) {
                    const Vector2d at =
                        contents.positions[static_cast<int>(i)][static_cast<int>(j)];
                    // Positions are told as sums here and as multiples there.
                    EXPECT_EQ((*mask.getMaskMatrix())(i, j),
                              polygon.containsPoint(QPointF(at.x, at.y), Qt::OddEvenFill) ? 1 : 0)
                        << i << " " << j;
                }
            }
        }
    }
}

TEST(SegmentationMask, KeepsAPolygonThatTouchesNoAScan)
{
    SegmentationMask mask(makeTestScan(lineScan(5, 4, 3)));
    mask.addPolygon(makeRectangle(7.0, 7.0, 8.0, 8.0));
    EXPECT_EQ(mask.getPolygons().size(), 1);
    EXPECT_EQ(mask.getPolygons().first(), makeRectangle(7.0, 7.0, 8.0, 8.0));
    EXPECT_EQ(countSet(mask), 0);
}

TEST(SegmentationMask, LeavesTheOverlapOfTwoPolygonsExcluded)
{
    SegmentationMask volume(makeTestScan(lineScan(5, 4, 2)));
    volume.addPolygon(makeRectangle(-0.01, -0.01, 0.03, 0.01));
    volume.addPolygon(makeRectangle(0.02, -0.01, 0.06, 0.01));
    EXPECT_THAT(bytesOf(*volume.getMaskMatrix()),
                testing::ElementsAre(1, 1, 1, 1, 1, 0, 0, 0, 0, 0));
}

TEST(SegmentationMask, KeepsTheHoleOfASelfOverlapOnlyForItsPolygon)
{
    // Twice around the same rectangle: every point inside is crossed an even number of times.
    QPolygonF twice = makeRectangle(-0.01, -0.01, 0.06, 0.01);
    twice.append(twice.first());
    twice += makeRectangle(-0.01, -0.01, 0.06, 0.01);
    SegmentationMask mask(makeTestScan(lineScan(5, 4, 2)));
    mask.addPolygon(twice);
    EXPECT_EQ(countSet(mask), 0);
    mask.addPolygon(makeRectangle(-0.01, -0.01, 0.06, 0.01));
    EXPECT_EQ(countSet(mask), 5);
    mask.addPolygon(twice);
    EXPECT_EQ(countSet(mask), 5);
}

TEST(SegmentationMask, IgnoresCoordinatesThatAreNoNumbers)
{
    const double nan = std::nan("");
    const double infinity = std::numeric_limits<double>::infinity();
    SegmentationMask mask(makeTestScan(lineScan(5, 4, 3)));
    mask.addPolygon(
        QPolygonF(QVector<QPointF>{QPointF(nan, nan), QPointF(nan, 0.0), QPointF(0.0, nan)}));
    mask.addPolygon(
        QPolygonF(QVector<QPointF>{QPointF(infinity, -infinity), QPointF(-infinity, infinity)}));
    EXPECT_EQ(mask.getPolygons().size(), 2);
}

TEST(SegmentationMask, PassesOnThatAPatternHasNoPositions)
{
    // One B-scan of a volume has no neighbour to tell the grid from.
    SegmentationMask mask(makeTestScan(lineScan(5, 4, 1)));
    EXPECT_THAT(
        messageOf<Assertion>([&] { mask.addPolygon(makeRectangle(0, 0, 1, 1)); }).toStdString(),
        testing::HasSubstr("only have 1 BScans, but need at least two."));
    EXPECT_EQ(mask.getPolygons().size(), 1);
}

TEST(SegmentationMask, NeverWritesBesideItsMatrixWhenBScansDiffer)
{
    TestScan contents = lineScan(6, 4, 3);
    const TestScan narrow = lineScan(4, 4, 3);
    contents.images[2] = narrow.images[2];
    contents.positions[2] = narrow.positions[2];
    SegmentationMask wideFirst(makeTestScan(contents));
    wideFirst.addPolygon(makeRectangle(-1, -1, 1, 1));
    EXPECT_EQ(wideFirst.getMaskMatrix()->columns, 4U);
    EXPECT_EQ(countSet(wideFirst), 12);

    TestScan circle = circleScan(6);
    EXPECT_NO_THROW(SegmentationMask(makeTestScan(circle)).addPolygon(makeRectangle(0, 0, 9, 9)));
}

TEST(SegmentationMask, TellsARowOutsideTheMatrix)
{
    const SegmentationMask mask(makeTestScan(lineScan(5, 4, 3)));
    EXPECT_EQ(messageOf<Assertion>([&] { mask.getMaskRow(3); }),
              QString(prefix) + "getMaskRow: Row index out of bounds.");
}

TEST(SegmentationMask, ForgetsPolygonsAndBytesWhenCleared)
{
    SegmentationMask mask(makeTestScan(lineScan(5, 4, 3)));
    mask.addPolygon(makeRectangle(-1, -1, 1, 1));
    EXPECT_EQ(countSet(mask), 15);
    const MaskMatrixPtr shared = mask.getMaskMatrix();
    mask.clear();
    EXPECT_TRUE(mask.getPolygons().isEmpty());
    EXPECT_EQ(countSet(mask), 0);
    EXPECT_EQ(mask.getMaskMatrix(), shared);
}

TEST(SegmentationMask, KeepsPolygonsButNotBytesForANewScan)
{
    SegmentationMask mask(makeTestScan(lineScan(5, 4, 3)));
    mask.addPolygon(makeRectangle(-1, -1, 1, 1));
    mask.setOCT(makeTestScan(lineScan(2, 4, 2)));
    EXPECT_EQ(mask.getPolygons().size(), 1);
    EXPECT_EQ(mask.getMaskMatrix()->size(), 4U);
    EXPECT_EQ(countSet(mask), 0);
    mask.addPolygon(makeRectangle(-1, -1, 1, 1));
    EXPECT_EQ(countSet(mask), 4);
}

TEST(SegmentationMask, RefusesScansWithoutContent)
{
    EXPECT_EQ(messageOf<Assertion>([] { SegmentationMask{OCTScanPtr()}; }),
              QString(prefix) + "setOCT: OCT scan is null.");
    EXPECT_EQ(messageOf<Assertion>([] { SegmentationMask{makeTestScan(TestScan())}; }),
              QString(prefix) + "setOCT: No BScans.");
    TestScan hollow = lineScan(5, 4, 2);
    const TestScan empty = lineScan(0, 4, 1);
    hollow.images[1] = empty.images[0];
    hollow.positions[1] = empty.positions[0];
    EXPECT_EQ(messageOf<Assertion>([&] { SegmentationMask{makeTestScan(hollow)}; }),
              QString(prefix) + "setOCT: Last BScan has no AScans.");
    hollow.images.swapItemsAt(0, 1);
    hollow.positions.swapItemsAt(0, 1);
    EXPECT_EQ(messageOf<Assertion>([&] { SegmentationMask{makeTestScan(hollow)}; }),
              QString(prefix) + "setOCT: First BScan has no AScans.");
}

/// The rule in its own words, element by element on a copy of the row before the pass: an element
/// starts a run if it is set and its left neighbour, as the pass has left it, is not; a start is
/// cleared unless the one before was; the last element of what is left of a run is cleared when the
/// element behind the run was clear.
std::vector<int> shrunk(std::vector<int> bytes, std::size_t columns)
{
    bool clearedJustNow = false;
    for (std::size_t first = 0; first < bytes.size(); first += columns) {
        for (std::size_t k = first + 1; k < first + columns; ++k) {
            const bool leftIsSet = bytes[k - 1] != 0;
            if (bytes[k] != 0) {
                if (!leftIsSet && !clearedJustNow) {
                    bytes[k] = 0;
                    clearedJustNow = true;
                } else {
                    clearedJustNow = false;
                }
            } else {
                clearedJustNow = false;
                if (leftIsSet) {
                    bytes[k - 1] = 0;
                }
            }
        }
    }
    return bytes;
}

void expectShrunk(unsigned rows, unsigned columns)
{
    const unsigned nrElements = rows * columns;
    for (unsigned pattern = 0; pattern < (1U << nrElements); ++pattern) {
        MaskMatrix mask(rows, columns);
        for (unsigned k = 0; k < nrElements; ++k) {
            mask.data[k] = (pattern >> k) & 1U ? 1 : 0;
        }
        const std::vector<int> before = bytesOf(mask);
        mask.shrinkRuns();
        ASSERT_EQ(bytesOf(mask), shrunk(before, columns))
            << rows << " x " << columns << ": " << testing::PrintToString(before);
    }
}

TEST(MaskMatrix, ShrinksEveryPatternOfOneRowByTheRule)
{
    for (unsigned columns = 1; columns <= 12; ++columns) {
        expectShrunk(1, columns);
    }
}

TEST(MaskMatrix, ShrinksEveryPatternOfSeveralRowsByTheRule)
{
    for (unsigned columns = 1; columns <= 6; ++columns) {
        expectShrunk(2, columns);
    }
    expectShrunk(3, 4);
    expectShrunk(5, 2);
}

std::vector<int> shrunkRow(std::initializer_list<unsigned char> bytes)
{
    MaskMatrix mask(1, static_cast<unsigned>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), mask.begin());
    mask.shrinkRuns();
    return bytesOf(mask);
}

TEST(MaskMatrix, RemovesOneElementFromEachEndOfARun)
{
    EXPECT_THAT(shrunkRow({0, 1, 1, 1, 1, 0}), testing::ElementsAre(0, 0, 1, 1, 0, 0));
    EXPECT_THAT(shrunkRow({0, 1, 1, 0, 0}), testing::ElementsAre(0, 0, 0, 0, 0));
    EXPECT_THAT(shrunkRow({0, 1, 0}), testing::ElementsAre(0, 0, 0));
}

TEST(MaskMatrix, KeepsTheElementOfARunAtABorder)
{
    EXPECT_THAT(shrunkRow({1, 1, 1, 0}), testing::ElementsAre(1, 1, 0, 0));
    EXPECT_THAT(shrunkRow({0, 1, 1, 1}), testing::ElementsAre(0, 0, 1, 1));
    EXPECT_THAT(shrunkRow({1, 1}), testing::ElementsAre(1, 1));
}

TEST(MaskMatrix, CarriesTheFlagIntoTheNextRow)
{
    // The last element of the first row is cleared, so the run at the second row's element 1 keeps
    // its start.
    MaskMatrix mask(2, 3);
    const unsigned char bytes[] = {0, 0, 1, 0, 1, 1};
    std::copy(std::begin(bytes), std::end(bytes), mask.begin());
    mask.shrinkRuns();
    EXPECT_THAT(bytesOf(mask), testing::ElementsAre(0, 0, 0, 0, 1, 1));
}

TEST(MaskMatrix, ShrinksNothingOfAnEmptyMatrix)
{
    MaskMatrix noColumns(3, 0);
    noColumns.shrinkRuns();
    MaskMatrix noRows(0, 3);
    noRows.shrinkRuns();
    EXPECT_EQ(noRows.size() + noColumns.size(), 0U);
}

} // namespace
