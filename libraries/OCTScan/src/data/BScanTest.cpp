#include "AnatomicalTarget.h"
#include "BScanCircular.h"
#include "BScanLine.h"
#include "ExpectFailure.h"
#include "Localizer.h"
#include "OCTScanPattern.h"
#include "TraceCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace kelp::oct {

using test::failure;
using test::TraceCapture;

namespace {

const std::string bScanPlace = "OCTScan/src/data/BScan::kelp::oct::BScan::";
const std::string linePlace = "OCTScan/src/data/BScanLine::kelp::oct::BScanLine::";

QSharedPointer<Image> makeImage(int columns, int rows, const Vector3<double>& spacing)
{
    return Image::create(MonoUInt8, {columns, rows, 1}, spacing);
}

QList<Vector2d> alongX(int count, double step)
{
    QList<Vector2d> positions;
    for (int i = 0; i < count; ++i) {
        positions.append({1.0 + i * step, 2.0});
    }
    return positions;
}

/// Five A-scans from (1, 2) to (2, 2), 0.25 mm apart, of five rows of 0.5 mm.
BScanLine makeLine()
{
    return BScanLine(alongX(5, 0.25), 0.5, makeImage(5, 5, {0.25, 0.5, 1.0}));
}

TEST(OCTScanPattern, EveryClassHasItsText)
{
    EXPECT_EQ(OCTScanPattern().toString(), "Invalid");
    EXPECT_EQ(OCTScanPatternVolume().toString(), "Volume");
    EXPECT_EQ(OCTScanPatternSingleBScan().toString(), "Single BScan");
    EXPECT_EQ(OCTScanPatternCircularBScan().toString(), "Circular BScan");
    EXPECT_EQ(OCTScanPatternStar().toString(), "Star");
    EXPECT_EQ(OCTScanPatternUnknown().toString(), "Unknown");
}

TEST(OCTScanPattern, ThatOfTheBaseClassEqualsOnlyAnotherInvalid)
{
    const OCTScanPattern base;
    EXPECT_TRUE(base == OCTScanPattern());
    EXPECT_FALSE(base != OCTScanPattern());
    EXPECT_TRUE(base != OCTScanPatternUnknown());
    EXPECT_TRUE(base != OCTScanPatternVolume());
    EXPECT_FALSE(base == OCTScanPatternStar());
}

TEST(OCTScanPattern, IsComparedByTextAndNotByClass)
{
    class Renamed : public OCTScanPattern
    {
        QString toString() const override { return "Star"; }
    };
    EXPECT_TRUE(Renamed() == OCTScanPatternStar());
}

TEST(AnatomicalTarget, EveryClassHasItsText)
{
    EXPECT_EQ(AnatomicalTarget().toString(), "Undefined");
    EXPECT_EQ(LeftEye().toString(), "OS");
    EXPECT_EQ(RightEye().toString(), "OD");
    EXPECT_EQ(BothEyes().toString(), "OU");
    EXPECT_EQ(UnknownEye().toString(), "O_Unknown");
    EXPECT_TRUE(LeftEye() == LeftEye());
    EXPECT_TRUE(LeftEye() != RightEye());
}

TEST(BScan, RefusesANullImageFirst)
{
    EXPECT_EQ(failure<Assertion>([] { BScanLine({}, 0.0, {}); }),
              bScanPlace + "BScan: Image data is null.");
}

TEST(BScan, RefusesAWrongNumberOfPositionsSecond)
{
    EXPECT_EQ(failure<Assertion>([] {
                  BScanLine(alongX(4, 1), 0.0, makeImage(5, 5, {1, 1, 1}));
              }),
              bScanPlace + "BScan: Size mismatch between image and nr of AScans.");
}

TEST(BScan, RefusesAnAxialResolutionThatIsNotAboveZero)
{
    for (const double resolution : {0.0, -1.0, std::nan("")}) {
        EXPECT_EQ(failure<Assertion>([=] {
                      BScanCircular(alongX(5, 1), resolution, makeImage(5, 5, {1, 1, 1}));
                  }),
                  bScanPlace + "BScan: Axial resolution is <= 0");
    }
}

TEST(BScan, GivesItsAScansOneByOne)
{
    const BScanLine line = makeLine();
    EXPECT_EQ(line.getNrAScans(), 5);
    EXPECT_EQ(line.getAScanPosition(4), (Vector2d{2.0, 2.0}));
    EXPECT_EQ(line.getAxialResolution(), 0.5);
    for (const unsigned index : {5u, static_cast<unsigned>(-1)}) {
        EXPECT_EQ(failure<Assertion>([&] { line.getAScanPosition(index); }),
                  bScanPlace + "getAScanPosition: index out of bounds");
    }
}

TEST(BScan, DirectionHasLengthOne)
{
    const BScanCircular slanted({{0.0, 0.0}, {9.0, 9.0}, {3.0, 4.0}}, 1.0,
                                makeImage(3, 1, {1, 1, 1}));
    EXPECT_DOUBLE_EQ(slanted.getScanDirection().x, 0.6);
    EXPECT_DOUBLE_EQ(slanted.getScanDirection().y, 0.8);
}

TEST(BScan, DirectionWithoutTwoAScansIsAlongX)
{
    EXPECT_EQ(BScanLine().getScanDirection(), (Vector2d{1.0, 0.0}));
    EXPECT_EQ(BScanCircular(alongX(1, 1), 1.0, makeImage(1, 1, {1, 1, 1})).getScanDirection(),
              (Vector2d{1.0, 0.0}));
}

TEST(BScan, DirectionOfATinyDisplacementIsLeftUnscaled)
{
    const BScanCircular tiny({{0.0, 0.0}, {1e-9, 0.0}}, 1.0, makeImage(2, 1, {1, 1, 1}));
    EXPECT_EQ(tiny.getScanDirection(), (Vector2d{1e-9, 0.0}));
}

TEST(BScan, ClosestOfTwoEquallyNearAScansIsTheFirst)
{
    const BScanCircular circle({{0.0, 0.0}, {2.0, 0.0}, {4.0, 0.0}}, 1.0,
                               makeImage(3, 1, {1, 1, 1}));
    EXPECT_EQ(circle.getClosestAScanPos({1.0, 5.0}), (Vector2d{0.0, 0.0}));
    EXPECT_EQ(circle.getClosestAScanPos({3.5, 0.0}), (Vector2d{4.0, 0.0}));
}

TEST(BScan, WithoutPositionsHasNoCenterAndNoClosestAScan)
{
    const BScanCircular empty;
    const std::string text = ": There is no AScan position information.";
    EXPECT_EQ(failure<Assertion>([&] { empty.getCenter(); }), bScanPlace + "getCenter" + text);
    EXPECT_EQ(failure<Assertion>([&] { empty.getClosestAScanPos({}); }),
              bScanPlace + "getClosestAScanPos" + text);
}

TEST(BScan, ScaledImageTruncatesItsSizeAndLeavesTheStoredOne)
{
    const BScanLine line = makeLine();
    const QSharedPointer<Image> scaled = line.getScaledImage(0.5, 0.5);
    EXPECT_EQ(scaled->getDimensions(), (Vector3<int>{2, 2, 1}));
    EXPECT_EQ(line.getImage()->getDimensions(), (Vector3<int>{5, 5, 1}));
    EXPECT_EQ(line.getScaledImage(1.0, 0.99)->getDimensions(), (Vector3<int>{5, 4, 1}));
}

TEST(BScan, ScaledImageNeedsAnImageAndASize)
{
    EXPECT_EQ(failure<Assertion>([] { BScanLine().getScaledImage(1.0, 1.0); }),
              bScanPlace + "getScaledImage: Image data is null.");
    for (const double scale : {0.1, 0.0, -1.0, 1e300, std::nan("")}) {
        EXPECT_THROW(makeLine().getScaledImage(scale, 1.0), Assertion) << scale;
    }
}

TEST(BScan, ClonesAreDeep)
{
    BScanLine line = makeLine();
    line.setMetaInfo({{"Quality", "30"}});
    const QSharedPointer<BScan> copy = line.clone();
    line.getImage()->pixels<std::uint8_t>()[0] = 9;
    EXPECT_EQ(copy->getImage()->pixels<std::uint8_t>()[0], 0);
    EXPECT_EQ(copy->getAScanPositions(), line.getAScanPositions());
    EXPECT_EQ(copy->getAxialResolution(), 0.5);
    EXPECT_EQ(copy->getMetaInfo(), line.getMetaInfo());
    EXPECT_TRUE(copy->isValid());
    EXPECT_EQ(copy->getClosestAScanPos({1.6, 0.0}), (Vector2d{1.5, 2.0}));

    const QSharedPointer<BScan> circle =
        BScanCircular(alongX(3, 1), 1.0, makeImage(3, 1, {1, 1, 1})).clone();
    EXPECT_NE(dynamic_cast<BScanCircular*>(circle.data()), nullptr);
    EXPECT_EQ(circle->getNrAScans(), 3);
    EXPECT_TRUE(BScanLine().clone()->getImage().isNull());
}

TEST(BScan, ObjectsAreTrackedByTheirSharedPointer)
{
    const QSharedPointer<BScan> copy = makeLine().clone();
    const QWeakPointer<BScan> weak = copy;
    EXPECT_EQ(weak.toStrongRef(), copy);
}

TEST(BScanCircular, SaysThatItIsMadeAndIsAlwaysValid)
{
    const TraceCapture trace;
    const BScanCircular circle(alongX(1, 1), 1.0, makeImage(1, 1, {1, 1, 3}));
    EXPECT_EQ(trace.lines(), QStringList{"BScanCircular ctor"});
    EXPECT_TRUE(circle.isValid());
    EXPECT_TRUE(BScanCircular().isValid());
}

TEST(BScanCircular, CenterIsTheMeanOfItsPositions)
{
    // Three quarters of a circle about (5, 5): the mean is not the circle's centre.
    const BScanCircular arc({{6.0, 5.0}, {5.0, 6.0}, {4.0, 5.0}}, 1.0, makeImage(3, 1, {1, 1, 1}));
    EXPECT_EQ(arc.getCenter(), (Vector2d{5.0, 16.0 / 3.0}));
}

TEST(BScanLine, CenterLiesHalfwayBetweenTheEnds)
{
    const BScanLine line = makeLine();
    EXPECT_TRUE(line.isValid());
    EXPECT_EQ(line.getCenter(), (Vector2d{1.5, 2.0}));
    EXPECT_EQ(line.getStartCoordinates(), (Vector2d{1.0, 2.0}));
    EXPECT_EQ(line.getEndCoordinates(), (Vector2d{2.0, 2.0}));
}

TEST(BScanLine, OfOnePlaceIsInvalid)
{
    const BScanLine point(alongX(3, 0.0), 1.0, makeImage(3, 1, {1, 1, 1}));
    const TraceCapture trace;
    EXPECT_FALSE(point.isValid());
    EXPECT_EQ(trace.lines(), QStringList{"BScanLine: not valid because m_aScanDistance <= 0.0"});
    const std::string text = ": Invalid BScan.";
    EXPECT_EQ(failure<Assertion>([&] { point.getCenter(); }), linePlace + "getCenter" + text);
    EXPECT_EQ(failure<Assertion>([&] { point.getClosestAScanPos({}); }),
              linePlace + "getClosestAScanPos" + text);
    EXPECT_EQ(failure<Assertion>([&] { point.getStartCoordinates(); }),
              linePlace + "getStartCoordinates" + text);
    EXPECT_EQ(failure<Assertion>([&] { point.getEndCoordinates(); }),
              linePlace + "getEndCoordinates" + text);
}

TEST(BScanLine, OfFewerThanTwoColumnsIsMadeButInvalid)
{
    EXPECT_FALSE(BScanLine(alongX(1, 1), 1.0, makeImage(1, 4, {1, 1, 1})).isValid());
    EXPECT_FALSE(BScanLine({}, 1.0, makeImage(0, 4, {1, 1, 1})).isValid());
    EXPECT_FALSE(BScanLine().isValid());
}

TEST(BScanLine, ClosestAScanIsComputedFromStartAndStep)
{
    const BScanLine line = makeLine();
    EXPECT_EQ(line.getClosestAScanPos({1.3, 7.0}), (Vector2d{1.25, 2.0}));
    EXPECT_EQ(line.getClosestAScanPos({1.125, 2.0}), (Vector2d{1.25, 2.0}));
    EXPECT_EQ(line.getClosestAScanPos({1.124, 2.0}), (Vector2d{1.0, 2.0}));
    // The positions between the ends are not looked up.
    QList<Vector2d> bent = alongX(5, 0.25);
    bent[1] = {50.0, 50.0};
    const BScanLine bentLine(bent, 0.5, makeImage(5, 5, {0.25, 0.5, 1.0}));
    EXPECT_EQ(bentLine.getClosestAScanPos({1.25, 2.0}), (Vector2d{1.25, 2.0}));
}

TEST(BScanLine, ClosestAScanIsHeldWithinTheLine)
{
    const BScanLine line = makeLine();
    EXPECT_EQ(line.getClosestAScanPos({100.0, 2.0}), (Vector2d{2.0, 2.0}));
    EXPECT_EQ(line.getClosestAScanPos({-100.0, 2.0}), (Vector2d{1.0, 2.0}));
    EXPECT_EQ(line.getClosestAScanPos({0.9999, 2.0}), (Vector2d{1.0, 2.0}));
    EXPECT_EQ(line.getClosestAScanPos({1e300, 2.0}), (Vector2d{2.0, 2.0}));
}

/// Breaks what the constructor has made sure of.
class BrokenLine : public BScanLine
{
public:
    BrokenLine() : BScanLine(alongX(5, 0.25), 0.5, makeImage(5, 5, {0.25, 0.5, 3.0})) {}

    using BScanLine::m_aScanPositions;
    using BScanLine::m_axialResolution;
    using BScanLine::m_data;
};

TEST(BScanLine, NamesTheFirstReasonThatMakesItInvalid)
{
    const QString start = "BScanLine: not valid because ";
    BrokenLine line;
    const auto firstReason = [&] {
        const TraceCapture trace;
        EXPECT_FALSE(line.isValid());
        return trace.lines();
    };
    EXPECT_EQ(firstReason(), QStringList{start + "image data is not 2D"});
    line.m_aScanPositions.removeLast();
    EXPECT_EQ(firstReason(), QStringList{start + "number of AScan positions does not match actual "
                                                 "image data dimension"});
    line.m_data.reset();
    EXPECT_EQ(firstReason(), QStringList{start + "m_data is null"});
    line.m_axialResolution = 0.0;
    EXPECT_EQ(firstReason(), QStringList{start + "m_axialResolution <= 0.0"});
}

struct SpacingCase
{
    Vector3<double> spacing;
    bool valid;
    QStringList lines;
};

TEST(BScanLine, TooLargeImageSpacingOnlyWarnsAndSkipsTheLastTest)
{
    const QString start = "BScanLine: not valid because ";
    const QString lateral = start + "lateral image spacing is wrong";
    const QString axial = start + "axial image spacing is wrong";
    const QString flat = start + "image data is not 2D";
    const SpacingCase cases[] = {
        {{0.25, 0.5, 1.0}, true, {}},
        {{0.25 + 2e-5, 0.5, 1.0}, true, {lateral}},
        {{0.25 + 2e-5, 0.5, 3.0}, true, {lateral}},
        {{0.25 + 5e-6, 0.5, 1.0}, true, {}},
        {{0.25, 0.5 + 2e-5, 3.0}, true, {axial}},
        {{0.01, 0.01, 1.0}, true, {}}, // one-sided: too small passes in silence
        {{0.25, 0.5, 3.0}, false, {flat}},
    };
    for (const SpacingCase& one : cases) {
        const BScanLine line(alongX(5, 0.25), 0.5, makeImage(5, 5, one.spacing));
        const TraceCapture trace;
        EXPECT_EQ(line.isValid(), one.valid);
        EXPECT_EQ(trace.lines(), one.lines);
    }
}

TEST(Localizer, HasNoImageAndNoSpacingAtFirst)
{
    const Localizer localizer;
    EXPECT_TRUE(localizer.getImage().isNull());
    EXPECT_EQ(localizer.getSpacing(), (Vector2d{0.0, 0.0}));
    EXPECT_TRUE(localizer.getMetaInfo().isEmpty());
}

TEST(Localizer, RefusesANullImage)
{
    Localizer localizer;
    EXPECT_EQ(failure<Assertion>([&] { localizer.setImage({}); }),
              "OCTScan/src/data/Localizer::kelp::oct::Localizer::setImage: Localizer "
              "image is null.");
    const QSharedPointer<Image> image = makeImage(2, 2, {1, 1, 1});
    localizer.setImage(image);
    localizer.setSpacing({0.5, 0.25});
    localizer.setMetaInfo({{"Angle", "30"}});
    EXPECT_EQ(localizer.getImage(), image);
    EXPECT_EQ(localizer.getSpacing(), (Vector2d{0.5, 0.25}));
    EXPECT_EQ(localizer.getMetaInfo().value("Angle").toString(), "30");
}

} // namespace

} // namespace kelp::oct
