#include "ExpectFailure.h"
#include "SliceStackTestModel.h"
#include "TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace {

using namespace kelp::oct;
using namespace kelp::oct::test;

std::vector<std::vector<int>> solve(const TinyCut& cut, SliceStackGraphQPBO& graph)
{
    graph.segment();
    std::vector<std::vector<int>> surfaces;
    for (const TinySurface& surface : cut.surfaces) {
        const VolumeLayerPtr layer = graph.getLayer(surface.name);
        surfaces.emplace_back(layer->begin(), layer->end());
    }
    return surfaces;
}

class SliceStackGraphTest : public testing::Test
{
protected:
    int draw(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    void drawPixels(TinyCut& cut, int rows)
    {
        const int contrast = draw(1, 9);
        for (unsigned z = 0; z < cut.nZ; ++z) {
            for (unsigned x = 0; x < cut.nX; ++x) {
                for (int row = 0; row < rows; ++row) {
                    cut.setPixel(x, row, z, static_cast<unsigned char>(draw(0, contrast)));
                }
            }
        }
    }

    /// Ranges of two to maxRows rows, at different heights.
    void drawRanges(TinySurface& surface, int from, int maxRows)
    {
        for (std::size_t k = 0; k < surface.top->size(); ++k) {
            const int top = from + draw(0, 2);
            surface.top->begin()[k] = static_cast<unsigned short>(top);
            surface.bottom->begin()[k] = static_cast<unsigned short>(top + draw(2, maxRows));
        }
    }

    void drawTerms(TinySurface& surface)
    {
        surface.deltaX = draw(0, 2);
        surface.deltaZ = draw(0, 2);
        surface.weightX = draw(0, 1) * draw(100, 3000);
        surface.weightZ = draw(0, 1) * draw(100, 3000);
        surface.stepX = static_cast<unsigned>(draw(1, 3));
        surface.stepZ = static_cast<unsigned>(draw(1, 3));
    }

    std::mt19937 m_random{5};
    TraceCapture m_trace;
    const LayerNamePtr m_ilm = LayerNameILM::create();
    const LayerNamePtr m_ise = LayerNameISe::create();
    const double m_everyColumn[2] = {1.0, 1.0};
};

TEST_F(SliceStackGraphTest, OneSurfaceIsTheBestOfAllSurfaces)
{
    const std::vector<std::tuple<unsigned, unsigned, int>> sizes{
        {1, 1, 6}, {2, 1, 5}, {4, 1, 5}, {1, 3, 5}, {2, 2, 5}, {3, 2, 3}, {2, 3, 3}, {3, 3, 2}};
    for (int round = 0; round < 400; ++round) {
        const auto [nX, nZ, maxRows] = sizes[static_cast<std::size_t>(round) % sizes.size()];
        TinyCut cut(nX, nZ, 10);
        drawPixels(cut, 10);
        TinySurface& surface = cut.addSurface(m_ilm, 0, 0);
        drawRanges(surface, 0, maxRows);
        drawTerms(surface);
        if (draw(0, 2) == 0) {
            (*cut.mask)(static_cast<std::size_t>(draw(0, static_cast<int>(nZ) - 1)),
                        static_cast<std::size_t>(draw(0, static_cast<int>(nX) - 1))) = 1;
        }
        const auto graph = cut.build();
        ASSERT_TRUE(graph->isGraphValid());
        ASSERT_EQ(solve(cut, *graph), TinyEnergy(cut).bestSurfaces()) << "round " << round;
    }
}

TEST_F(SliceStackGraphTest, TwoSurfacesWithLimitsAndSoftDistancesAreTheBestOfAllPairs)
{
    int compared = 0;
    for (int round = 0; round < 500; ++round) {
        TinyCut cut(2, 1, 14);
        drawPixels(cut, 14);
        drawRanges(cut.addSurface(m_ilm, 0, 0), 0, 5);
        drawRanges(cut.addSurface(m_ise, 0, 0), draw(0, 4), 5);
        drawTerms(cut.surfaces[0]);
        drawTerms(cut.surfaces[1]);
        const int minimum = draw(0, 3);
        const int maximum = minimum + draw(1, 5);
        const bool hasLimits = draw(0, 1) == 1;
        if (hasLimits) {
            cut.distances[{0, 1}] = {minimum, maximum};
        }
        const int distance = draw(0, 1) * draw(1, 5);
        const float weight = static_cast<float>(draw(1, 30)) / 8.0F;
        const auto graph = cut.build();
        TinyEnergy energy(cut);
        if (distance > 0) {
            ASSERT_TRUE(graph->addConstantInterSurfaceRegularization(
                m_ilm, m_ise, VolumeLayerPtr::create(1U, 2U), static_cast<unsigned>(distance),
                weight, m_everyColumn));
        }
        // Where a distance reaches beyond the end of a column the ids go on into the next one,
        // which the energy in rows does not know.
        bool isPlain = true;
        for (unsigned x = 0; x < 2; ++x) {
            const int topA = (*cut.surfaces[0].top)(0, x);
            const int topB = (*cut.surfaces[1].top)(0, x);
            const int bottomA = (*cut.surfaces[0].bottom)(0, x);
            const int bottomB = (*cut.surfaces[1].bottom)(0, x);
            if (hasLimits) {
                isPlain = isPlain && topB - maximum < bottomA && topA + minimum <= bottomB;
            }
            if (distance > 0) {
                const int shift = distance - (bottomB - bottomA);
                isPlain = isPlain && -shift <= bottomA - topA && shift <= bottomB - topB;
                energy.addBetween(0, 1, x, 0, distance, static_cast<int>(weight * 1000.0F));
            }
        }
        if (isPlain) {
            ++compared;
            ASSERT_EQ(solve(cut, *graph), energy.bestSurfaces()) << "round " << round;
        }
    }
    EXPECT_GT(compared, 250);
}

TEST_F(SliceStackGraphTest, WithTheTopSurfaceAbsentTheBottomOneIsDrawnToRowsBelowItsRange)
{
    for (int round = 0; round < 100; ++round) {
        TinyCut cut(2, 2, 14);
        drawPixels(cut, 14);
        drawRanges(cut.addSurface(m_ise, 0, 0), 2, 5);
        const auto offsets = VolumeLayerPtr::create(2U, 2U);
        TinyEnergy energy(cut);
        for (unsigned z = 0; z < 2; ++z) {
            for (unsigned x = 0; x < 2; ++x) {
                (*offsets)(z, x) = static_cast<unsigned short>(draw(0, 4));
                const int wanted = 4 - (*offsets)(z, x);
                energy.addToRow(0, x, z, (*cut.surfaces[0].top)(z, x) + wanted, 2500);
            }
        }
        const auto graph = cut.build();
        ASSERT_TRUE(graph->addConstantInterSurfaceRegularization(m_ilm, m_ise, offsets, 4, 2.5F,
                                                                 m_everyColumn));
        ASSERT_EQ(solve(cut, *graph), energy.bestSurfaces()) << "round " << round;
    }
}

TEST_F(SliceStackGraphTest, WithTheBottomSurfaceAbsentTheTopOneIsDrawnToRowsAboveItsBaseNode)
{
    for (int round = 0; round < 100; ++round) {
        TinyCut cut(2, 2, 14);
        drawPixels(cut, 14);
        drawRanges(cut.addSurface(m_ilm, 0, 0), 2, 5);
        const auto offsets = VolumeLayerPtr::create(2U, 2U);
        TinyEnergy energy(cut);
        for (unsigned z = 0; z < 2; ++z) {
            for (unsigned x = 0; x < 2; ++x) {
                (*offsets)(z, x) = static_cast<unsigned short>(draw(0, 4));
                const int wanted = 4 - (*offsets)(z, x);
                energy.addToRow(0, x, z, (*cut.surfaces[0].bottom)(z, x) - 1 - wanted, 2500);
            }
        }
        const auto graph = cut.build();
        ASSERT_TRUE(graph->addConstantInterSurfaceRegularization(m_ilm, m_ise, offsets, 4, 2.5F,
                                                                 m_everyColumn));
        ASSERT_EQ(solve(cut, *graph), energy.bestSurfaces()) << "round " << round;
    }
}

TEST_F(SliceStackGraphTest, WithBothSurfacesAbsentTheSoftOperationsAddNothing)
{
    TinyCut cut(2, 2, 8);
    cut.addSurface(m_ilm, 0, 6);
    const auto graph = cut.build();
    const int edges = graph->solver().GetEdgeNum();
    const auto offsets = VolumeLayerPtr::create(2U, 2U);
    const double spacing[3] = {1.0, 1.0, 1.0};
    const double origin[2] = {0.0, 0.0};
    const LayerDistributionPtr distribution(
        new LayerDistribution({{1.0}}, {{1.0}}, Vector3d{1.0, 1.0, 1.0}, {0.0, 0.0}, "BM", "ISe"));
    EXPECT_FALSE(graph->addConstantInterSurfaceRegularization(LayerNameBM::create(), m_ise, offsets,
                                                              3, 1.0F, m_everyColumn));
    EXPECT_FALSE(graph->addStatisticalInterSurfaceRegularization(
        LayerNameBM::create(), m_ise, offsets, distribution, 1.0F, m_everyColumn, spacing, origin));
    EXPECT_FALSE(graph->addStatisticalInterSurfaceRegularization(m_ilm, m_ise, offsets, {}, 1.0F,
                                                                 m_everyColumn, spacing, origin));
    EXPECT_EQ(graph->solver().GetEdgeNum(), edges);
    EXPECT_EQ(graph->solver().GetEnergyConstant(), 0);
}

TEST_F(SliceStackGraphTest, TheModelsDistanceIsInRowsAndItsWeightFallsWithTheDeviation)
{
    TinyCut cut(2, 2, 16);
    cut.addSurface(m_ise, 2, 14);
    // Columns of the model 0.5 apart: the A-scans meet columns 0 and 1, the B-scans rows 0 and 1.
    const LayerDistributionPtr distribution(
        new LayerDistribution({{0.35, 0.55}, {0.75, 0.95}}, {{0.04, 0.09}, {0.0, 1.0}},
                              Vector3d{0.5, 0.5, 0.5}, {0.0, 0.0}, "ILM", "ISe"));
    const double spacing[3] = {0.5, 0.1, 0.5};
    const double origin[2] = {0.0, 0.0};
    const auto graph = cut.build();
    std::vector<int> before;
    graph->solver().forEachNode([&](int, int capacity) { before.push_back(capacity); });
    ASSERT_TRUE(graph->addStatisticalInterSurfaceRegularization(
        m_ilm, m_ise, VolumeLayerPtr::create(2U, 2U), distribution, 0.5F, m_everyColumn, spacing,
        origin));
    std::vector<int> added;
    graph->solver().forEachNode([&](int i, int capacity) {
        added.push_back(capacity - before[static_cast<std::size_t>(i)]);
    });
    const double means[2][2] = {{0.35, 0.55}, {0.75, 0.95}};
    const double deviations[2][2] = {{0.2, 0.3}, {0.0, 1.0}};
    for (unsigned z = 0; z < 2; ++z) {
        for (unsigned x = 0; x < 2; ++x) {
            const ColumnNodeIds& ids = graph->columnNodeIds(0, x, z);
            const int rows = static_cast<int>(means[z][x] / 0.1);
            const double weight = 1000.0 * 20.0 * 0.5 / (deviations[z][x] / 0.1 + 1.0);
            for (std::uint32_t id = ids.first; id <= ids.base; ++id) {
                const bool isAbove = static_cast<int>(id - ids.first) < rows;
                EXPECT_NEAR(added[id], isAbove ? weight : -weight, 1.0) << x << z << id;
            }
        }
    }
}

TEST_F(SliceStackGraphTest, SoftDistancesVisitEveryStepthColumn)
{
    TinyCut cut(5, 4, 8);
    cut.addSurface(m_ise, 0, 6);
    const auto graph = cut.build();
    std::vector<int> before;
    graph->solver().forEachNode([&](int, int capacity) { before.push_back(capacity); });
    const double step[2] = {3.0, 1.5};
    ASSERT_TRUE(graph->addConstantInterSurfaceRegularization(
        m_ilm, m_ise, VolumeLayerPtr::create(4U, 5U), 3, 1.0F, step));
    std::vector<std::pair<unsigned, unsigned>> visited;
    std::vector<int> after;
    graph->solver().forEachNode([&](int, int capacity) { after.push_back(capacity); });
    for (unsigned z = 0; z < 4; ++z) {
        for (unsigned x = 0; x < 5; ++x) {
            const std::size_t first = graph->columnNodeIds(0, x, z).first;
            if (after[first] != before[first]) {
                visited.emplace_back(z, x);
            }
        }
    }
    // 0, 1.5 cut to 1, 2.5 cut to 2, ...
    EXPECT_EQ(visited,
              (std::vector<std::pair<unsigned, unsigned>>{
                  {0, 0}, {0, 1}, {0, 2}, {0, 3}, {0, 4}, {3, 0}, {3, 1}, {3, 2}, {3, 3}, {3, 4}}));
}

TEST_F(SliceStackGraphTest, NodesPushedOverTheEndOfAColumnAreThoseOfTheNext)
{
    TinyCut cut(2, 1, 40);
    cut.addSurface(m_ilm, 0, 3);
    cut.addSurface(m_ise, 30, 33);
    const auto graph = cut.build();
    std::vector<int> before;
    graph->solver().forEachNode([&](int, int capacity) { before.push_back(capacity); });
    const double firstColumnOnly[2] = {1.0, 2.0};
    // The bottoms are 30 apart and 26 are wanted: four nodes from the first on, of which the
    // column has three.
    ASSERT_TRUE(graph->addConstantInterSurfaceRegularization(
        m_ilm, m_ise, VolumeLayerPtr::create(1U, 2U), 26, 1.0F, firstColumnOnly));
    std::vector<int> added;
    graph->solver().forEachNode([&](int i, int capacity) {
        added.push_back(capacity - before[static_cast<std::size_t>(i)]);
    });
    EXPECT_EQ(added,
              (std::vector<int>{1000, 1000, 1000, 1000, 0, 0, -1000, -1000, -1000, 0, 0, 0}));
}

TEST_F(SliceStackGraphTest, NodesPastTheLastAreSkipped)
{
    TinyCut cut(1, 1, 60);
    cut.addSurface(m_ilm, 0, 3);
    cut.addSurface(m_ise, 50, 53);
    cut.distances[{0, 1}] = {0, 5};
    const auto graph = cut.build();
    ASSERT_TRUE(graph->addConstantInterSurfaceRegularization(
        m_ilm, m_ise, VolumeLayerPtr::create(1U, 1U), 1, 1.0F, m_everyColumn));
    graph->segment();
    EXPECT_EQ(graph->solver().GetNodeNum(), 6);
}

} // namespace
