#include "CutQuality.h"

#include "ExpectFailure.h"
#include "SliceStackTestModel.h"
#include "TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace kelp::oct {

static void PrintTo(const QualityCounts& counts, std::ostream* stream)
{
    *stream << counts.aScans << " A-scans, top " << counts.atTop << ", bottom " << counts.atBottom
            << ", without room " << counts.withoutRoom << ", without row " << counts.withoutRow;
}

namespace {

using test::failure;
using test::TinyCut;
using test::TinySurface;
using test::TraceCapture;
using testing::ElementsAre;

bool allHaveRows(int /*layer*/, unsigned /*bScan*/, unsigned /*aScan*/)
{
    return false;
}

VolumeLayerPtr layerOf(unsigned bScans, unsigned aScans, const std::vector<int>& rows)
{
    const auto layer = VolumeLayerPtr::create(bScans, aScans);
    std::copy(rows.begin(), rows.end(), layer->begin());
    return layer;
}

/// The figures of one surface, whose rows are given B-scan by B-scan.
SurfaceQuality measureOne(const TinyCut& cut, const std::vector<int>& rows,
                          const IsWithoutRow& isWithoutRow = allHaveRows)
{
    return measureCutQuality(cut.properties(), *cut.mask, {layerOf(cut.nZ, cut.nX, rows)},
                             isWithoutRow)
        .front();
}

struct CutQuality : testing::Test
{
    int draw(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    /// One column with surfaces of random ranges and random limits between neighbours.
    void drawChain(TinyCut& cut, int nrSurfaces)
    {
        const QList<LayerNamePtr> names{LayerNameGCL::create(), LayerNameINL::create(),
                                        LayerNameONL::create()};
        for (int i = 0; i < nrSurfaces; ++i) {
            const int top = draw(0, 8);
            cut.addSurface(names[i], top, top + draw(2, 6));
            if (i > 0) {
                const int minimum = draw(0, 6);
                cut.distances[{i - 1, i}] = {minimum,
                                             draw(0, 1) == 0 ? minimum + draw(0, 5) : draw(0, 8)};
            }
        }
    }

    std::mt19937 m_random{11};
    TraceCapture m_trace;
};

TEST_F(CutQuality, CountsTheEndsOfTheSearchRange)
{
    TinyCut cut(4, 2, 20);
    cut.addSurface(LayerNameILM::create(), 5, 10);
    // The last row of the range is the one before its end.
    const SurfaceQuality quality = measureOne(cut, {5, 5, 6, 9, 8, 9, 7, 6});
    EXPECT_EQ(quality.surface, "ILM");
    EXPECT_THAT(quality.bScans,
                ElementsAre(QualityCounts{4, 2, 1, 0, 0}, QualityCounts{4, 0, 1, 0, 0}));
    EXPECT_EQ(quality.all(), (QualityCounts{8, 2, 2, 0, 0}));
}

TEST_F(CutQuality, MeasuresEachColumnByItsOwnRange)
{
    TinyCut cut(3, 1, 20);
    TinySurface& surface = cut.addSurface(LayerNameILM::create(), 5, 10);
    (*surface.top)(0, 1) = 7;
    (*surface.bottom)(0, 2) = 8;
    EXPECT_EQ(measureOne(cut, {7, 7, 7}).all(), (QualityCounts{3, 1, 1, 0, 0}));
}

TEST_F(CutQuality, MaskedAScansDoNotCount)
{
    TinyCut cut(3, 2, 20);
    cut.addSurface(LayerNameILM::create(), 5, 10);
    cut.addSurface(LayerNameISe::create(), 5, 10);
    cut.distances[{0, 1}] = {100, 200};
    (*cut.mask)(0, 1) = 1;
    std::fill(cut.mask->begin() + 3, cut.mask->end(), static_cast<unsigned char>(1));
    const VolumeLayerPtr tops = layerOf(2, 3, {5, 5, 5, 5, 5, 5});
    const auto qualities = measureCutQuality(
        cut.properties(), *cut.mask, {tops, tops},
        [](int layer, unsigned, unsigned aScan) { return layer == 1 || aScan == 1; });
    ASSERT_EQ(qualities.size(), 2);
    EXPECT_THAT(qualities[0].bScans, ElementsAre(QualityCounts{2, 2, 0, 2, 0}, QualityCounts()));
    EXPECT_THAT(qualities[1].bScans, ElementsAre(QualityCounts{2, 0, 0, 2, 2}, QualityCounts()));
}

TEST_F(CutQuality, ASurfaceWithoutRowIsNotAtTheTopOfItsRange)
{
    TinyCut cut(3, 1, 20);
    cut.addSurface(LayerNameILM::create(), 5, 10);
    const SurfaceQuality quality =
        measureOne(cut, {5, 5, 9}, [](int, unsigned, unsigned aScan) { return aScan != 0; });
    EXPECT_EQ(quality.all(), (QualityCounts{3, 1, 0, 0, 2}));
}

TEST_F(CutQuality, ThereIsRoomExactlyWhereSomeRowsKeepAllDistances)
{
    int withRoom = 0;
    constexpr int rounds = 4000;
    for (int round = 0; round < rounds; ++round) {
        TinyCut cut(1, 1, 40);
        const int nrSurfaces = 2 + round % 2;
        drawChain(cut, nrSurfaces);
        const auto first = [&](int i) { return int{(*cut.surfaces[i].top)(0, 0)}; };
        const auto end = [&](int i) { return int{(*cut.surfaces[i].bottom)(0, 0)}; };
        // As the graph has it: an upper surface that starts further above the lower one than the
        // maximum loses also the row at exactly the maximum above the lower one's first.
        const auto isAllowed = [&](int i, int upper, int lower) {
            const auto [minimum, maximum] = cut.distances.at({i, i + 1});
            const bool isForbidden =
                first(i + 1) - first(i) > maximum && upper == first(i + 1) - maximum;
            return !isForbidden && lower - upper >= minimum && lower - upper <= maximum;
        };
        bool hasRoom = false;
        for (int a = first(0); a < end(0); ++a) {
            for (int b = first(1); b < end(1); ++b) {
                const bool isPair = isAllowed(0, a, b);
                hasRoom = hasRoom || (isPair && nrSurfaces == 2);
                for (int c = nrSurfaces == 3 ? first(2) : 0; nrSurfaces == 3 && c < end(2); ++c) {
                    hasRoom = hasRoom || (isPair && isAllowed(1, b, c));
                }
            }
        }
        withRoom += hasRoom ? 1 : 0;
        const QList<VolumeLayerPtr> layers(
            QVector<VolumeLayerPtr>(nrSurfaces, layerOf(1, 1, {0})).toList());
        for (const SurfaceQuality& quality :
             measureCutQuality(cut.properties(), *cut.mask, layers, allHaveRows)) {
            ASSERT_EQ(quality.all().withoutRoom, hasRoom ? 0 : 1) << "round " << round;
        }
    }
    EXPECT_GT(withRoom, rounds / 10);
    EXPECT_LT(withRoom, rounds - rounds / 10);
}

TEST_F(CutQuality, TheGraphGivesAllSurfacesOfAColumnARowExactlyWhereThereIsRoom)
{
    int withRoom = 0;
    constexpr int rounds = 1000;
    for (int round = 0; round < rounds; ++round) {
        // Even images, so that no row costs more than to leave the column without one.
        TinyCut cut(1, 1, 40);
        drawChain(cut, 2 + round % 2);
        const auto graph = cut.build();
        graph->segment();
        QList<VolumeLayerPtr> layers;
        bool allRows = true;
        for (int i = 0; i < cut.surfaces.size(); ++i) {
            layers.append(graph->getLayer(cut.surfaces[i].name));
            allRows = allRows && graph->hasRow(i, 0, 0);
        }
        const auto qualities = measureCutQuality(
            cut.properties(), *cut.mask, layers,
            [&](int layer, unsigned z, unsigned x) { return !graph->hasRow(layer, x, z); });
        withRoom += allRows ? 1 : 0;
        int layer = 0;
        for (const SurfaceQuality& quality : qualities) {
            ASSERT_EQ(quality.all().withoutRoom, allRows ? 0 : 1) << "round " << round;
            ASSERT_EQ(quality.all().withoutRow, graph->hasRow(layer++, 0, 0) ? 0 : 1);
        }
    }
    EXPECT_GT(withRoom, rounds / 10);
    EXPECT_LT(withRoom, rounds - rounds / 10);
}

TEST_F(CutQuality, OneColumnWithoutRoomTakesTheSurfaceFromAllThatAreTiedToIt)
{
    // Five A-scans of two B-scans; A-scan 3 is masked, so that A-scan 4 stands alone.
    TinyCut cut(5, 2, 40);
    cut.addSurface(LayerNameGCL::create(), 5, 12);
    TinySurface& lower = cut.addSurface(LayerNameINL::create(), 10, 20);
    cut.distances[{0, 1}] = {2, 10};
    (*cut.mask)(0, 3) = 1;
    (*cut.mask)(1, 3) = 1;
    // More than ten rows below all of the upper surface.
    (*lower.top)(1, 1) = 25;
    (*lower.bottom)(1, 1) = 30;
    const auto graph = cut.build();
    graph->segment();
    const auto qualities = measureCutQuality(
        cut.properties(), *cut.mask,
        {graph->getLayer(cut.surfaces[0].name), graph->getLayer(cut.surfaces[1].name)},
        [&](int layer, unsigned z, unsigned x) { return !graph->hasRow(layer, x, z); });
    int tiedWithoutRow = 0;
    for (const SurfaceQuality& quality : qualities) {
        EXPECT_EQ(quality.bScans[0].withoutRoom, 0);
        EXPECT_EQ(quality.bScans[1].withoutRoom, 1);
        const int withoutRow = quality.all().withoutRow;
        EXPECT_TRUE(withoutRow == 0 || withoutRow == 6) << withoutRow;
        tiedWithoutRow += withoutRow;
    }
    EXPECT_GE(tiedWithoutRow, 6) << "one of the two must go";
}

TEST_F(CutQuality, SurfacesThatNoDistanceTiesKeepTheirRoom)
{
    TinyCut cut(1, 1, 60);
    cut.addSurface(LayerNameILM::create(), 0, 5);
    cut.addSurface(LayerNameGCL::create(), 0, 5);
    cut.addSurface(LayerNameINL::create(), 0, 5);
    cut.distances[{1, 2}] = {10, 20};
    const VolumeLayerPtr layer = layerOf(1, 1, {2});
    const auto qualities =
        measureCutQuality(cut.properties(), *cut.mask, {layer, layer, layer}, allHaveRows);
    EXPECT_EQ(qualities[0].all().withoutRoom, 0);
    EXPECT_EQ(qualities[1].all().withoutRoom, 1);
    EXPECT_EQ(qualities[2].all().withoutRoom, 1);
}

TEST_F(CutQuality, DistancesAgainstTheOrderOfThePlanDoNotCountAsTheGraphDoesNotTakeThem)
{
    TinyCut cut(1, 1, 60);
    cut.addSurface(LayerNameGCL::create(), 0, 5);
    cut.addSurface(LayerNameINL::create(), 0, 5);
    cut.distances[{1, 0}] = {10, 20};
    const VolumeLayerPtr layer = layerOf(1, 1, {2});
    const auto qualities =
        measureCutQuality(cut.properties(), *cut.mask, {layer, layer}, allHaveRows);
    EXPECT_EQ(qualities[0].all().withoutRoom, 0);
    EXPECT_EQ(qualities[1].all().withoutRoom, 0);
    const auto graph = cut.build();
    graph->segment();
    EXPECT_TRUE(graph->hasRow(0, 0, 0) && graph->hasRow(1, 0, 0));
}

TEST_F(CutQuality, LooksUpNoPairThatWasNeverRegistered)
{
    TinyCut cut(1, 1, 20);
    cut.addSurface(LayerNameILM::create(), 0, 5);
    cut.addSurface(LayerNameISe::create(), 0, 5);
    const VolumeLayerPtr layer = layerOf(1, 1, {2});
    measureCutQuality(cut.properties(), *cut.mask, {layer, layer}, allHaveRows);
    EXPECT_EQ(m_trace.lines(), QStringList());
}

TEST_F(CutQuality, LayersAndMaskMustBeThoseOfThePlan)
{
    TinyCut cut(2, 1, 20);
    cut.addSurface(LayerNameILM::create(), 0, 5);
    const std::string place = "OCTScan/src/layerSeg/CutQuality::kelp::oct::measureCutQuality: ";
    EXPECT_EQ(failure<Assertion>(
                  [&] { measureCutQuality(cut.properties(), *cut.mask, {}, allHaveRows); }),
              place + "Number of layers does not match the plan.");
    EXPECT_EQ(failure<Assertion>([&] {
                  measureCutQuality(cut.properties(), MaskMatrix(1, 3), {layerOf(1, 2, {1, 1})},
                                    allHaveRows);
              }),
              place + "Segmentation mask does not match the plan.");
}

} // namespace
} // namespace kelp::oct
