#include "EtdrsGrid.h"

#include "SegmentationTestTools.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace kelp::oct;
using namespace kelp::oct::test;
using kelp::Assertion;
using testing::HasSubstr;

namespace {

const CoordOnLocalizer origin{0.0, 0.0};

EtdrsSector sectorAt(double dx, double dz, bool rightEye = true)
{
    const CoordOnLocalizer fovea{4.0, 3.0};
    return etdrsSector({fovea.x + dx, fovea.y + dz}, fovea, rightEye);
}

TEST(EtdrsSector, LiesNasallyAtPositiveXInARightEye)
{
    EXPECT_EQ(sectorAt(1.0, 0.0, true), EtdrsSector::N1);
    EXPECT_EQ(sectorAt(-1.0, 0.0, true), EtdrsSector::T1);
    EXPECT_EQ(sectorAt(2.0, 0.0, true), EtdrsSector::N2);
    EXPECT_EQ(sectorAt(-2.0, 0.0, true), EtdrsSector::T2);
    EXPECT_EQ(sectorAt(1.0, 0.0, false), EtdrsSector::T1);
    EXPECT_EQ(sectorAt(-1.0, 0.0, false), EtdrsSector::N1);
    EXPECT_EQ(sectorAt(2.0, 0.0, false), EtdrsSector::T2);
    EXPECT_EQ(sectorAt(-2.0, 0.0, false), EtdrsSector::N2);
}

TEST(EtdrsSector, LiesSuperiorlyAtNegativeYInBothEyes)
{
    for (const bool rightEye : {true, false}) {
        EXPECT_EQ(sectorAt(0.0, -1.0, rightEye), EtdrsSector::S1);
        EXPECT_EQ(sectorAt(0.0, 1.0, rightEye), EtdrsSector::I1);
        EXPECT_EQ(sectorAt(0.0, -2.0, rightEye), EtdrsSector::S2);
        EXPECT_EQ(sectorAt(0.0, 2.0, rightEye), EtdrsSector::I2);
    }
}

TEST(EtdrsSector, HoldsItsOuterCircle)
{
    EXPECT_EQ(etdrsSector({0.5, 0.0}, origin, true), EtdrsSector::C);
    EXPECT_EQ(etdrsSector({std::nextafter(0.5, 1.0), 0.0}, origin, true), EtdrsSector::N1);
    EXPECT_EQ(etdrsSector({1.5, 0.0}, origin, true), EtdrsSector::N1);
    EXPECT_EQ(etdrsSector({std::nextafter(1.5, 2.0), 0.0}, origin, true), EtdrsSector::N2);
    EXPECT_EQ(etdrsSector({3.0, 0.0}, origin, true), EtdrsSector::N2);
    EXPECT_EQ(etdrsSector({std::nextafter(3.0, 4.0), 0.0}, origin, true), EtdrsSector::Outside);
}

TEST(EtdrsSector, CountsDiagonalsAsNasalOrTemporal)
{
    EXPECT_EQ(etdrsSector({1.0, 1.0}, origin, true), EtdrsSector::N1);
    EXPECT_EQ(etdrsSector({-1.0, 1.0}, origin, true), EtdrsSector::T1);
    EXPECT_EQ(etdrsSector({1.0, -2.0}, origin, true), EtdrsSector::S2);
    EXPECT_EQ(etdrsSector({1.0, std::nextafter(1.0, 2.0)}, origin, true), EtdrsSector::I1);
}

TEST(EtdrsSector, HasTheIdsOfTheGrid)
{
    const int ids[] = {0, 1, 2, 3, 4, 7, 8, 5, 6};
    const char* const labels[] = {"C", "N1", "N2", "S1", "S2", "T1", "T2", "I1", "I2"};
    for (int column = 0; column < EtdrsTable::nrColumns; ++column) {
        EXPECT_EQ(static_cast<int>(EtdrsTable::columnSector(column)), ids[column]);
        EXPECT_EQ(EtdrsTable::columnLabel(column), labels[column]);
    }
    EXPECT_EQ(static_cast<int>(EtdrsSector::Outside), 9);
}

TEST(EtdrsTable, MeasuresTheLayersOfItsRows)
{
    const char* const rows[][3] = {
        {"NFL", "ILM", "GCL"}, {"GCL + IPL", "GCL", "INL"},     {"INL + OPL", "INL", "ONL"},
        {"ONL", "ONL", "ISe"}, {"RPE-OS Complex", "ISe", "BM"}, {"Complete Retina", "ILM", "BM"}};
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        EXPECT_EQ(EtdrsTable::rowLabel(row), rows[row][0]);
        EXPECT_EQ(EtdrsTable::topLayer(row)->getIdentifier(), rows[row][1]);
        EXPECT_EQ(EtdrsTable::bottomLayer(row)->getIdentifier(), rows[row][2]);
    }
    EXPECT_THAT(messageOf<Assertion>([] { EtdrsTable::topLayer(6); }).toStdString(),
                HasSubstr("Tried to measure nonsense values"));
    EXPECT_THROW(EtdrsTable::rowLabel(-1), Assertion);
    EXPECT_THROW(EtdrsTable::columnLabel(9), Assertion);
}

TEST(EtdrsTable, ShowsTwoDecimalsOrADash)
{
    EXPECT_EQ(EtdrsTable::cellText(287.346), "287.35");
    EXPECT_EQ(EtdrsTable::cellText(5.0), "5.00");
    EXPECT_EQ(EtdrsTable::cellText(0.0), "0.00");
    EXPECT_EQ(EtdrsTable::cellText(std::nullopt), "-");
}

TEST(EtdrsTable, IsALineOfLabelsAndALinePerRow)
{
    EtdrsTable table;
    table.means[0][0] = 12.345;
    table.means[5][8] = 300.0;
    table.coverage[1] = {12, 20, 1300};
    const QStringList lines = table.toTabSeparated().split('\n');
    ASSERT_EQ(lines.size(), 10);
    EXPECT_EQ(lines[0], "\tC\tN1\tN2\tS1\tS2\tT1\tT2\tI1\tI2");
    EXPECT_EQ(lines[1], "NFL\t12.35\t-\t-\t-\t-\t-\t-\t-\t-");
    EXPECT_EQ(lines[6], "Complete Retina\t-\t-\t-\t-\t-\t-\t-\t-\t300.00");
    EXPECT_EQ(lines[7], "A-scans\t0\t12\t0\t0\t0\t0\t0\t0\t0");
    EXPECT_EQ(lines[8], "A-scans expected\t0\t1300\t0\t0\t0\t0\t0\t0\t0");
    EXPECT_TRUE(lines[9].isEmpty());
}

/// A volume of 7 mm by 7 mm and six surfaces of known distances.
class EtdrsMeasurement : public testing::Test
{
protected:
    static constexpr int nrAScans = 57;
    static constexpr int nrBScans = 29;
    static constexpr double aScanStep = 0.125;
    static constexpr double bScanStep = 0.25;

    EtdrsMeasurement()
    {
        m_contents = lineScan(nrAScans, 4, nrBScans, aScanStep, bScanStep);
        m_contents.localizer = kelp::Image::create(kelp::MonoUInt8, {4, 4, 1});
        make();
    }

    void make()
    {
        m_segmentation = new OCTScanSegmentation(makeTestScan(m_contents));
        setLaterality("R");
        const LayerNamePtr names[] = {LayerNameILM::create(), LayerNameGCL::create(),
                                      LayerNameINL::create(), LayerNameONL::create(),
                                      LayerNameISe::create(), LayerNameBM::create()};
        for (int k = 0; k < 6; ++k) {
            m_segmentation->setVolumeLayer(makeSurface(nrBScans, nrAScans,
                                                       [k](unsigned r, unsigned c) {
                                                           return static_cast<int>(
                                                               20 + k * (3 + (r * 7 + c * 5) % 11));
                                                       }),
                                           names[k]);
        }
    }

    void setLaterality(const char* text) const
    {
        const auto localizer = m_segmentation->getOCT()->getLocalizer();
        localizer->setMetaInfo({{"Laterality", QString(text)}});
    }

    /// The mean in micrometres over the A-scans for which the predicate holds, from the surfaces'
    /// formula alone.
    template <typename Predicate>
    double mean(int layersApart, Predicate&& counts) const
    {
        double sum = 0.0;
        int number = 0;
        for (int r = 0; r < nrBScans; ++r) {
            for (int c = 0; c < nrAScans; ++c) {
                const double dx = c * aScanStep - m_fovea.x;
                const double dz = r * bScanStep - m_fovea.y;
                if (counts(dx, dz)) {
                    sum += layersApart * (3 + (r * 7 + c * 5) % 11) * 3.872;
                    ++number;
                }
            }
        }
        return sum / number;
    }

    double measured(int row, int column) const
    {
        return measureEtdrs(m_segmentation, m_fovea)
            .means[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]
            .value();
    }

    CoordOnLocalizer m_fovea{3.4, 3.6};
    TestScan m_contents;
    OCTScanSegPtr m_segmentation;
};

TEST_F(EtdrsMeasurement, GivesTheMeanOfEverySector)
{
    const auto inRing = [](double dx, double dz, double inner, double outer) {
        const double radius = std::hypot(dx, dz);
        return radius > inner && radius <= outer;
    };
    const auto isSideways = [](double dx, double dz) { return std::abs(dx) >= std::abs(dz); };
    for (int row = 0; row < EtdrsTable::nrRows; ++row) {
        const int apart = row == 5 ? 5 : 1;
        EXPECT_NEAR(measured(row, 0),
                    mean(apart, [](double dx, double dz) { return std::hypot(dx, dz) <= 0.5; }),
                    1e-9);
        for (int ring = 0; ring < 2; ++ring) {
            const double inner = ring == 0 ? 0.5 : 1.5;
            const double outer = ring == 0 ? 1.5 : 3.0;
            const auto expectMean = [&](int column, auto&& isQuadrant) {
                EXPECT_NEAR(measured(row, column + ring),
                            mean(apart,
                                 [&](double dx, double dz) {
                                     return inRing(dx, dz, inner, outer) && isQuadrant(dx, dz);
                                 }),
                            1e-9)
                    << row << " " << column + ring;
            };
            expectMean(1, [&](double dx, double dz) { return isSideways(dx, dz) && dx > 0; });
            expectMean(3, [&](double dx, double dz) { return !isSideways(dx, dz) && dz < 0; });
            expectMean(5, [&](double dx, double dz) { return isSideways(dx, dz) && dx < 0; });
            expectMean(7, [&](double dx, double dz) { return !isSideways(dx, dz) && dz > 0; });
        }
    }
}

TEST_F(EtdrsMeasurement, SwapsNasalAndTemporalInALeftEye)
{
    const EtdrsTable right = measureEtdrs(m_segmentation, m_fovea);
    setLaterality("L");
    const EtdrsTable left = measureEtdrs(m_segmentation, m_fovea);
    for (std::size_t row = 0; row < EtdrsTable::nrRows; ++row) {
        EXPECT_EQ(left.means[row][1], right.means[row][5]);
        EXPECT_EQ(left.means[row][6], right.means[row][2]);
        EXPECT_EQ(left.means[row][3], right.means[row][3]);
    }
    EXPECT_NE(left.means[0][1], right.means[0][1]);
}

TEST_F(EtdrsMeasurement, CountsAScanWithoutLocalizerAsNoRightEye)
{
    EXPECT_TRUE(isRightEye(*m_segmentation->getOCT()));
    m_contents.localizer.reset();
    EXPECT_FALSE(isRightEye(*makeTestScan(m_contents)));
}

TEST_F(EtdrsMeasurement, MovesWithTheFovea)
{
    const double before = measured(0, 0);
    m_fovea = {2.0, 5.1};
    EXPECT_NEAR(measured(0, 0),
                mean(1, [](double dx, double dz) { return std::hypot(dx, dz) <= 0.5; }), 1e-9);
    EXPECT_NE(measured(0, 0), before);
}

TEST_F(EtdrsMeasurement, ShowsADashForASectorOutsideTheScan)
{
    m_fovea = {3.4, -1.6};
    const EtdrsTable table = measureEtdrs(m_segmentation, m_fovea);
    EXPECT_EQ(EtdrsTable::cellText(table.means[0][3]), "-") << "S1 lies above the scan";
    EXPECT_TRUE(table.means[0][8].has_value()) << "I2 reaches into it";
}

TEST_F(EtdrsMeasurement, LeavesMaskedAScansOut)
{
    m_segmentation->getMask()->addPolygon(makeRectangle(0.0, 0.0, m_fovea.x, 9.0));
    EXPECT_NEAR(
        measured(0, 0),
        mean(1, [](double dx, double dz) { return std::hypot(dx, dz) <= 0.5 && dx >= 0.0; }), 1e-9);
    m_segmentation->getMask()->addPolygon(makeRectangle(-1.0, -1.0, 9.0, 9.0));
    EXPECT_FALSE(measureEtdrs(m_segmentation, m_fovea).means[0][0].has_value());
}

TEST_F(EtdrsMeasurement, TakesTheDistanceOfCrossedSurfacesAsItIs)
{
    m_segmentation->setVolumeLayer(makeFlatSurface(nrBScans, nrAScans, 9), LayerNameILM::create());
    m_segmentation->setVolumeLayer(makeFlatSurface(nrBScans, nrAScans, 4), LayerNameGCL::create());
    EXPECT_NEAR(measured(0, 0), 5 * 3.872, 1e-9);
}

TEST_F(EtdrsMeasurement, NeedsAllSurfaces)
{
    m_segmentation->setEmptySegmentation();
    m_segmentation->setVolumeLayer(makeFlatSurface(nrBScans, nrAScans, 4), LayerNameILM::create());
    m_segmentation->setVolumeLayer(makeFlatSurface(nrBScans, nrAScans, 9), LayerNameBM::create());
    EXPECT_THAT(messageOf<Assertion>([&] { measureEtdrs(m_segmentation, m_fovea); }).toStdString(),
                HasSubstr("Coult not find layer with name GCL"));
    const EtdrsTable table = measureEtdrs(m_segmentation, m_fovea, false);
    EXPECT_NEAR(table.means[5][0].value(), 5 * 3.872, 1e-9);
    EXPECT_FALSE(table.means[0][0].has_value());
}

TEST_F(EtdrsMeasurement, RefusesNulls)
{
    EXPECT_THROW(measureEtdrs(OCTScanSegPtr(), m_fovea), Assertion);
    EXPECT_THROW(measureEtdrs(OCTScanSegPtr(new OCTScanSegmentation), m_fovea), Assertion);
    EXPECT_THROW(foveaOrCenter(OCTScanSegPtr()), Assertion);
}

TEST_F(EtdrsMeasurement, IsMadeAroundTheStoredFoveaOrTheScansCentre)
{
    const Vector2d center = m_segmentation->getOCT()->getCenter();
    EXPECT_EQ(foveaOrCenter(m_segmentation), CoordOnLocalizer(center));
    m_segmentation->setFoveaPosition({m_fovea, true});
    EXPECT_EQ(foveaOrCenter(m_segmentation), m_fovea);
}

} // namespace
