#include "SliceStackTestModel.h"
#include "TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace {

using namespace kelp::oct;
using namespace kelp::oct::test;

constexpr int hard = 1000000000;

/// Which nodes are joined, by which capacities, as the solver has them.
class SliceStackEdgesTest : public testing::Test
{
protected:
    using Edge = std::tuple<int, int, int, int>;

    std::vector<Edge> edgesOf(const SliceStackGraphQPBO& graph) const
    {
        std::vector<Edge> edges;
        graph.solver().forEachEdge(
            [&](int i, int j, int cap, int reverse) { edges.emplace_back(i, j, cap, reverse); });
        return edges;
    }

    std::vector<int> capacitiesOf(const SliceStackGraphQPBO& graph) const
    {
        std::vector<int> capacities;
        graph.solver().forEachNode([&](int, int capacity) { capacities.push_back(capacity); });
        return capacities;
    }

    /// How many edges of these capacities join each pair of columns (x1, z1, x2, z2).
    std::map<std::vector<unsigned>, int>
    linksOf(const TinyCut& cut, const SliceStackGraphQPBO& graph, int cap, int reverse) const
    {
        std::map<int, std::vector<unsigned>> columnOfNode;
        for (unsigned z = 0; z < cut.nZ; ++z) {
            for (unsigned x = 0; x < cut.nX; ++x) {
                const ColumnNodeIds& ids = graph.columnNodeIds(0, x, z);
                for (auto id = ids.first; (*cut.mask)(z, x) == 0 && id <= ids.base; ++id) {
                    columnOfNode[static_cast<int>(id)] = {x, z};
                }
            }
        }
        std::map<std::vector<unsigned>, int> links;
        for (const auto& [i, j, c, r] : edgesOf(graph)) {
            std::vector<unsigned> key = columnOfNode.at(i);
            const std::vector<unsigned>& other = columnOfNode.at(j);
            key.insert(key.end(), other.begin(), other.end());
            if (c == cap && r == reverse && columnOfNode.at(i) != other) {
                ++links[key];
            }
        }
        return links;
    }

    TraceCapture m_trace;
    const LayerNamePtr m_ilm = LayerNameILM::create();
    const LayerNamePtr m_ise = LayerNameISe::create();
};

TEST_F(SliceStackEdgesTest, AColumnOfTwoRowsHasTwoNodesAndOneEdge)
{
    TinyCut cut(1, 1, 8);
    cut.addSurface(m_ilm, 3, 5);
    cut.setPixel(0, 3, 0, 40);
    cut.setPixel(0, 4, 0, 15);
    const auto graph = cut.build();
    EXPECT_EQ(capacitiesOf(*graph), (std::vector<int>{25, -1000}));
    EXPECT_EQ(edgesOf(*graph), (std::vector<Edge>{{0, 1, 0, hard}}));
}

TEST_F(SliceStackEdgesTest, OnlyTheFirstNodesTermIsUnscaled)
{
    TinyCut cut(1, 1, 8);
    cut.addSurface(m_ilm, 2, 6);
    const unsigned char pixels[] = {10, 17, 12, 20};
    for (int k = 0; k < 4; ++k) {
        cut.setPixel(0, 2 + k, 0, pixels[k]);
    }
    const auto graph = cut.build();
    EXPECT_EQ(capacitiesOf(*graph), (std::vector<int>{-7, 5000, -8000, -1000}));
    EXPECT_EQ(graph->solver().GetEnergyConstant(), 0);
}

TEST_F(SliceStackEdgesTest, AMaskedColumnHasNoNodesAndItsNeighboursNoTies)
{
    TinyCut cut(3, 1, 8);
    TinySurface& surface = cut.addSurface(m_ilm, 2, 5);
    surface.weightX = 77;
    (*cut.mask)(0, 1) = 1;
    const auto graph = cut.build();
    EXPECT_EQ(graph->solver().GetNodeNum(), 6);
    EXPECT_EQ(graph->columnNodeIds(0, 1, 0).first, 0U);
    EXPECT_EQ(graph->columnNodeIds(0, 1, 0).base, 0U);
    EXPECT_EQ(graph->columnNodeIds(0, 2, 0).first, 3U);
    EXPECT_EQ(
        edgesOf(*graph),
        (std::vector<Edge>{{0, 1, 0, hard}, {1, 2, 0, hard}, {3, 4, 0, hard}, {4, 5, 0, hard}}));
    graph->segment();
    EXPECT_EQ((*graph->getLayer(m_ilm))(0, 1), 2);
}

TEST_F(SliceStackEdgesTest, TheSlopeLimitCountsRowsOfTheImage)
{
    // Bottoms two rows apart, a limit of one row: row y of the first column forces row y + 1.
    TinyCut cut(2, 1, 16);
    TinySurface& surface = cut.addSurface(m_ilm, 2, 8);
    (*surface.top)(0, 1) = 4;
    (*surface.bottom)(0, 1) = 10;
    const auto graph = cut.build();
    std::vector<std::pair<int, int>> rows;
    for (const auto& [i, j, cap, reverse] : edgesOf(*graph)) {
        if (cap == 0 && i < 6 && j >= 6) {
            rows.emplace_back(2 + i, 4 + j - 6);
        }
    }
    // From row 7 down, which is the first column's last, no edge starts.
    EXPECT_EQ(rows, (std::vector<std::pair<int, int>>{{6, 7}, {5, 6}, {4, 5}, {3, 4}}));
}

TEST_F(SliceStackEdgesTest, ASingleBScanHasSlopeEdgesAlongItOnly)
{
    TinyCut cut(4, 1, 8);
    cut.addSurface(m_ilm, 1, 3).deltaX = 0;
    const auto links = linksOf(cut, *cut.build(), 0, hard);
    EXPECT_EQ(links, (std::map<std::vector<unsigned>, int>{{{0, 0, 1, 0}, 2},
                                                           {{1, 0, 0, 0}, 2},
                                                           {{1, 0, 2, 0}, 2},
                                                           {{2, 0, 1, 0}, 2},
                                                           {{2, 0, 3, 0}, 2},
                                                           {{3, 0, 2, 0}, 2}}));
}

TEST_F(SliceStackEdgesTest, NoSlopeEdgeLeadsFromTheBorderInwards)
{
    TinyCut cut(3, 3, 8);
    TinySurface& surface = cut.addSurface(m_ilm, 1, 3);
    surface.deltaX = 0;
    surface.deltaZ = 0;
    const auto links = linksOf(cut, *cut.build(), 0, hard);
    const std::vector<unsigned> inner{1, 1};
    int outwards = 0;
    for (const auto& [key, count] : links) {
        EXPECT_EQ(count, 2);
        EXPECT_NE((std::vector<unsigned>{key[2], key[3]}), inner);
        outwards += (std::vector<unsigned>{key[0], key[1]}) == inner;
    }
    EXPECT_EQ(outwards, 4);
    EXPECT_EQ(links.size(), 4U + 16U);
}

TEST_F(SliceStackEdgesTest, NeighbouringBaseNodesAreTiedBothWays)
{
    TinyCut cut(2, 2, 8);
    cut.addSurface(m_ilm, 1, 4);
    const auto links = linksOf(cut, *cut.build(), hard, hard);
    EXPECT_EQ(links,
              (std::map<std::vector<unsigned>, int>{
                  {{0, 1, 0, 0}, 1}, {{1, 0, 0, 0}, 1}, {{1, 1, 0, 1}, 1}, {{1, 1, 1, 0}, 1}}));
}

TEST_F(SliceStackEdgesTest, AStepOfOneGivesOneChainARow)
{
    TinyCut cut(4, 2, 8);
    cut.addSurface(m_ilm, 1, 3).weightX = 50;
    const auto links = linksOf(cut, *cut.build(), 50, 50);
    EXPECT_EQ(links, (std::map<std::vector<unsigned>, int>{{{0, 0, 1, 0}, 2},
                                                           {{1, 0, 2, 0}, 2},
                                                           {{2, 0, 3, 0}, 2},
                                                           {{0, 1, 1, 1}, 2},
                                                           {{1, 1, 2, 1}, 2},
                                                           {{2, 1, 3, 1}, 2}}));
}

TEST_F(SliceStackEdgesTest, AStepOfThreeTiesTheEndsOfEachRowOverOneAndTwoColumns)
{
    TinyCut cut(6, 1, 8);
    TinySurface& surface = cut.addSurface(m_ilm, 1, 3);
    surface.weightX = 50;
    surface.stepX = 3;
    const auto links = linksOf(cut, *cut.build(), 50, 50);
    EXPECT_EQ(links, (std::map<std::vector<unsigned>, int>{{{0, 0, 3, 0}, 2},
                                                           {{1, 0, 4, 0}, 2},
                                                           {{2, 0, 5, 0}, 2},
                                                           {{0, 0, 1, 0}, 2},
                                                           {{0, 0, 2, 0}, 2},
                                                           {{4, 0, 5, 0}, 2},
                                                           {{3, 0, 5, 0}, 2}}));
}

TEST_F(SliceStackEdgesTest, TheEndsAcrossTheBScansAreTiedOnce)
{
    TinyCut cut(1, 5, 8);
    TinySurface& surface = cut.addSurface(m_ilm, 1, 3);
    surface.weightZ = 50;
    surface.stepZ = 2;
    const auto links = linksOf(cut, *cut.build(), 50, 50);
    EXPECT_EQ(links, (std::map<std::vector<unsigned>, int>{{{0, 0, 0, 2}, 2},
                                                           {{0, 1, 0, 3}, 2},
                                                           {{0, 2, 0, 4}, 2},
                                                           {{0, 0, 0, 1}, 2},
                                                           {{0, 3, 0, 4}, 2}}));
}

TEST_F(SliceStackEdgesTest, AStepBeyondTheGridSkipsWhatLiesOutside)
{
    TinyCut cut(2, 2, 8);
    TinySurface& surface = cut.addSurface(m_ilm, 1, 3);
    surface.weightX = 50;
    surface.weightZ = 60;
    surface.stepX = 5;
    surface.stepZ = 5;
    const auto graph = cut.build();
    // Each end of a row is tied to the other, from both sides.
    EXPECT_EQ(linksOf(cut, *graph, 50, 50),
              (std::map<std::vector<unsigned>, int>{{{0, 0, 1, 0}, 4}, {{0, 1, 1, 1}, 4}}));
    EXPECT_EQ(linksOf(cut, *graph, 60, 60),
              (std::map<std::vector<unsigned>, int>{{{0, 0, 0, 1}, 4}, {{1, 0, 1, 1}, 4}}));
}

TEST_F(SliceStackEdgesTest, AWeightOfZeroSkipsItsStageAndItsMessage)
{
    TinyCut cut(3, 3, 8);
    cut.addSurface(m_ilm, 1, 3);
    const int edges = cut.build()->solver().GetEdgeNum();
    const auto said = [&](const char* direction) {
        return m_trace.lines()
            .filter(QString("regualrizing in %1-direction").arg(direction))
            .size();
    };
    EXPECT_EQ(said("X"), 0);
    EXPECT_EQ(said("Z"), 0);
    // Less than one is zero as well.
    cut.surfaces[0].weightX = 0;
    cut.surfaces[0].weightZ = 9;
    EXPECT_GT(cut.build()->solver().GetEdgeNum(), edges);
    EXPECT_EQ(said("X"), 0);
    EXPECT_EQ(said("Z"), 1);
    cut.surfaces[0].weightX = 9;
    cut.surfaces[0].weightZ = 0;
    cut.build();
    EXPECT_EQ(said("X"), 1);
    EXPECT_EQ(said("Z"), 1);
    EXPECT_EQ(m_trace.lines().filter("regularization done").size(), 3);
    EXPECT_EQ(m_trace.lines().filter("regualrizing").first(),
              "OCTScan/src/layerSeg/SliceStackGraphQPBO::kelp::oct::SliceStackGraphQPBO::"
              "regularizeLayerWithExpectedAngle: regualrizing in Z-direction");
}

TEST_F(SliceStackEdgesTest, AddRegularizationRefusesPartnersOutsideTheGrid)
{
    TinyCut cut(3, 2, 8);
    cut.addSurface(m_ilm, 1, 4);
    (*cut.mask)(0, 0) = 1;
    const auto graph = cut.build();
    const int edges = graph->solver().GetEdgeNum();
    EXPECT_FALSE(graph->addRegularization(m_ilm, {1, 0}, 2, 0, 0, 5));
    EXPECT_EQ(m_trace.lines().last(), "x-dir out of bounds");
    EXPECT_FALSE(graph->addRegularization(m_ilm, {1, 1}, 0, 0, 1, 5));
    EXPECT_EQ(m_trace.lines().last(), "z-dir out of bounds");
    // From a masked column on nothing is asked.
    EXPECT_TRUE(graph->addRegularization(m_ilm, {0, 0}, 9, 0, 9, 5));
    EXPECT_TRUE(graph->addRegularization(m_ilm, {0, 1}, 0, 0, 0, 0));
    EXPECT_EQ(graph->solver().GetEdgeNum(), edges + 3);
    EXPECT_TRUE(graph->addRegularization(m_ilm, {1, 0}, 1, -1, 0, 5));
    EXPECT_EQ(graph->solver().GetEdgeNum(), edges + 3 + 2);
}

TEST_F(SliceStackEdgesTest, AMaximumBelowTheOffsetForbidsTheTopRowsWithTheOneAtTheLimit)
{
    // The bottom range starts 6 rows below the top one, 4 are allowed: rows 0 and 1 of the top
    // range reach no row, and row 2 is at the limit.
    TinyCut cut(1, 1, 20);
    cut.addSurface(m_ilm, 2, 7);
    cut.addSurface(m_ise, 8, 13);
    cut.distances[{0, 1}] = {1, 4};
    EXPECT_EQ(capacitiesOf(*cut.build()),
              (std::vector<int>{hard, hard, hard, 0, -1000, 0, 0, 0, 0, -1000}));
}

TEST_F(SliceStackEdgesTest, AMinimumAboveTheOffsetForbidsTheBottomRowsWithoutTheOneAtTheLimit)
{
    // The bottom range starts 1 row below the top one and 3 rows are asked for.
    TinyCut cut(1, 1, 20);
    cut.addSurface(m_ilm, 2, 7);
    cut.addSurface(m_ise, 3, 8);
    cut.distances[{0, 1}] = {3, 9};
    EXPECT_EQ(capacitiesOf(*cut.build()),
              (std::vector<int>{0, 0, 0, 0, -1000, hard, hard, 0, 0, -1000}));
}

TEST_F(SliceStackEdgesTest, APairWithoutDistancesIsSkippedWithTheMessagesOfTheProperties)
{
    TinyCut cut(1, 1, 20);
    cut.addSurface(m_ilm, 2, 7);
    cut.addSurface(m_ise, 3, 8);
    const auto graph = cut.build();
    EXPECT_EQ(graph->solver().GetEdgeNum(), 8);
    EXPECT_EQ(m_trace.lines().filter("Could not find inter-surface distances").size(), 2);
    EXPECT_EQ(m_trace.lines().filter("done connecting subgraphs").size(), 0);
}

} // namespace
