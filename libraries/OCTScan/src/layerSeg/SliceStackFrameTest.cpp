#include "ExpectFailure.h"
#include "SliceStackTestModel.h"
#include "TraceCapture.h"

#include <QObject>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace kelp::oct;
using namespace kelp::oct::test;
using kelp::Assertion;
using kelp::Exception;

constexpr const char* constructorPlace =
    "OCTScan/src/layerSeg/SliceStackGraphQPBO::kelp::oct::SliceStackGraphQPBO::SliceStackGraphQPBO"
    ": ";

/// What surrounds the terms: the order of the steps, what they say, and how they fail.
class SliceStackFrameTest : public testing::Test
{
protected:
    SliceStackFrameTest()
    {
        m_cut.addSurface(m_ilm, 1, 6);
        m_cut.addSurface(m_ise, 4, 9);
        m_cut.distances[{0, 1}] = {1, 8};
        for (unsigned z = 0; z < 2; ++z) {
            for (unsigned x = 0; x < 3; ++x) {
                m_cut.setPixel(x, 0, z, 9);
                m_cut.setPixel(x, 1, z, 9);
                m_cut.setPixel(x, 2, z, 9);
            }
        }
        SegWatcher* const watcher = m_cut.watcher.data();
        watcher->reset();
        watcher->addStep();
        watcher->startStep();
        QObject::connect(watcher, &SegWatcher::statusChanged,
                         [this](const QString& message) { m_said.append(message); });
        QObject::connect(watcher, &SegWatcher::segmentationProgress,
                         [this](int percentage) { m_said.append(QString::number(percentage)); });
    }

    TraceCapture m_trace;
    const LayerNamePtr m_ilm = LayerNameILM::create();
    const LayerNamePtr m_ise = LayerNameISe::create();
    TinyCut m_cut{3, 2, 12};
    QStringList m_said;
};

TEST_F(SliceStackFrameTest, StatusAndProgressTellTheStages)
{
    const auto graph = m_cut.build();
    EXPECT_EQ(m_said, (QStringList{"10", "Constructing graph", "15", "15",
                                   "Constructing subgraph " + m_ilm->getLongName(), "25",
                                   "Constructing subgraph " + m_ise->getLongName(),
                                   "All subgraphs constructed", "35", "50",
                                   "Connecting subgraphs " + m_ilm->getLongName() + " to " +
                                       m_ise->getLongName()}));
    m_said.clear();
    graph->segment();
    EXPECT_EQ(m_said, (QStringList{"Solving graph", "55", "80", "85", "90", "Graph solved"}));
}

TEST_F(SliceStackFrameTest, TheTraceNamesEveryStage)
{
    m_cut.build()->segment();
    const QString ilm = m_ilm->getLongName();
    const QString ise = m_ise->getLongName();
    QStringList lines = m_trace.lines();
    // The solver's own block stands after the count of edges.
    EXPECT_EQ(lines.mid(0, 2), (QStringList{"graph qpbo", "nLayers: 2"}));
    const int nodes = 2 + 2 * 6 * 8;
    EXPECT_EQ(lines[2], QString("nEdges: %1").arg(static_cast<int>(5.0 * 1.1 * nodes)));
    EXPECT_EQ(lines.filter("Memory requirements initial").first(),
              QString("Memory requirements initial: %1 nodes").arg(nodes + 4));
    lines = lines.mid(lines.indexOf("preparing graph..."));
    EXPECT_EQ(lines, (QStringList{"preparing graph...",
                                  "subgraph 0 for layer " + ilm,
                                  "constructing sub-graph...",
                                  "adding node columns...",
                                  "adding inter-column edges...",
                                  "finished constructing sub-graph...",
                                  "regularizing subgraph ILM",
                                  "regularization done",
                                  "done regularizing subgraph",
                                  "subgraph 1 for layer " + ise,
                                  "constructing sub-graph...",
                                  "adding node columns...",
                                  "adding inter-column edges...",
                                  "finished constructing sub-graph...",
                                  "regularizing subgraph ISe",
                                  "regularization done",
                                  "done regularizing subgraph",
                                  "creating inter-surface edges...",
                                  "subgraph 0",
                                  "done connecting subgraphs",
                                  "done constructing graph",
                                  "SliceStackGraphQPBO() finished",
                                  "Graph Cut: Starting to solve...",
                                  "SliceStackGraphQPBO::segment: Graph cut solved.",
                                  "Computing weak persistencies...",
                                  "Graph Cut: Weak persistencies computed."}));
}

TEST_F(SliceStackFrameTest, ColumnsOfMoreThanTwoHundredNodesAreTraced)
{
    TinyCut cut(1, 2, 300);
    TinySurface& surface = cut.addSurface(m_ilm, 0, 200);
    (*surface.bottom)(1, 0) = 201;
    cut.build();
    const QStringList lines = m_trace.lines().filter("nodes: ");
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0], "i: 0 = ILM z: 1, x: 0 nodes: 201");
}

TEST_F(SliceStackFrameTest, AColumnWithoutASurfaceEndsAtTheTopOfItsRange)
{
    // Every row of the upper surface is forbidden.
    m_cut.distances[{0, 1}] = {0, 0};
    m_cut.surfaces[1].top = VolumeLayerPtr::create(2U, 3U);
    m_cut.surfaces[1].bottom = VolumeLayerPtr::create(2U, 3U);
    std::fill(m_cut.surfaces[1].top->begin(), m_cut.surfaces[1].top->end(), 8);
    std::fill(m_cut.surfaces[1].bottom->begin(), m_cut.surfaces[1].bottom->end(), 11);
    const auto graph = m_cut.build();
    graph->segment();
    for (const unsigned short row : *graph->getLayer(m_ilm)) {
        EXPECT_EQ(row, 1);
    }
    EXPECT_EQ(graph->solver().GetLabel(static_cast<int>(graph->columnNodeIds(0, 0, 0).base)), 0);
}

TEST_F(SliceStackFrameTest, GetLayerComparesInstances)
{
    const auto graph = m_cut.build();
    EXPECT_FALSE(graph->getLayer(m_ilm).isNull());
    EXPECT_TRUE(graph->getLayer(LayerNameILM::create()).isNull());
    EXPECT_EQ(failure<Assertion>([&] { graph->getLayer({}); }),
              "OCTScan/src/layerSeg/SliceStackGraph::kelp::oct::SliceStackGraph::getLayer: "
              "Layer name is null.");
}

TEST_F(SliceStackFrameTest, ARangeOfFewerThanTwoRowsIsRefusedByName)
{
    (*m_cut.surfaces[1].bottom)(1, 2) = 5;
    EXPECT_EQ(failure<Exception>([&] { m_cut.build(); }),
              "The search range of layer " + m_ise->getLongName().toStdString() +
                  " has fewer than two rows at B-scan 2, A-scan 3: 4 to 5.");
    // Where the mask excludes the column its range does not matter.
    (*m_cut.mask)(1, 2) = 1;
    EXPECT_TRUE(m_cut.build()->isGraphValid());
}

TEST_F(SliceStackFrameTest, NullArgumentsAreRefused)
{
    const SliceStackProperties properties = m_cut.properties();
    EXPECT_EQ(failure<Assertion>(
                  [&] { SliceStackGraphQPBO(m_cut.images, properties, m_cut.mask, {}, 5.0); }),
              std::string(constructorPlace) + "Seg Watcher is null");
    EXPECT_EQ(failure<Assertion>(
                  [&] { SliceStackGraphQPBO(m_cut.images, properties, {}, m_cut.watcher, 5.0); }),
              std::string(constructorPlace) + "Segmentation Mask is null");
}

TEST_F(SliceStackFrameTest, InputOfAnotherSizeThanTheGridIsRefused)
{
    m_cut.images.removeLast();
    EXPECT_EQ(failure<Assertion>([&] { m_cut.build(); }),
              std::string(constructorPlace) + "Number of images does not match the graph.");
    m_cut.images.append(kelp::Image::create(kelp::MonoUInt8, {2, 12, 1}));
    EXPECT_EQ(failure<Assertion>([&] { m_cut.build(); }),
              std::string(constructorPlace) + "Image does not match the graph.");
    m_cut.images.last() = m_cut.images.first();
    m_cut.mask.reset(new MaskMatrix(2, 2));
    EXPECT_EQ(failure<Assertion>([&] { m_cut.build(); }),
              std::string(constructorPlace) + "Segmentation mask does not match the graph.");
    m_cut.mask.reset(new MaskMatrix(2, 3));
    m_cut.surfaces[0].top = VolumeLayerPtr::create(2U, 2U);
    EXPECT_EQ(failure<Assertion>([&] { m_cut.build(); }),
              std::string(constructorPlace) + "Search range does not match the graph.");
}

TEST_F(SliceStackFrameTest, AnEmptyGridGivesAGraphThatSegmentLeavesAlone)
{
    for (const auto& [nX, nZ, text] :
         {std::tuple<unsigned, unsigned, const char*>{
              0, 0,
              "could not construct graph. m_gridColNodeIds.front().size(): 0, "
              "m_gridColNodeIds.front().front().size(): 0"},
          {3, 0,
           "could not construct graph. m_gridColNodeIds.front().size(): 3, "
           "m_gridColNodeIds.front().front().size(): 0"}}) {
        TinyCut cut(nX, nZ, 5);
        cut.addSurface(m_ilm, 0, 4);
        const auto graph = cut.build();
        EXPECT_FALSE(graph->isGraphValid());
        EXPECT_EQ(m_trace.lines().filter("could not").last(), text);
        graph->segment();
        EXPECT_FALSE(graph->isGraphValid());
        EXPECT_EQ(m_trace.lines().filter("Starting to solve").size(), 0);
    }
}

TEST_F(SliceStackFrameTest, AnAbortBeforeTheBuildLeavesAnInvalidGraph)
{
    m_cut.watcher->requestAbort();
    m_said.clear();
    const auto graph = m_cut.build();
    EXPECT_FALSE(graph->isGraphValid());
    EXPECT_EQ(graph->solver().GetNodeNum(), 0);
    EXPECT_EQ(m_said, (QStringList{"10", "Aborting segmentation"}));
    graph->segment();
    EXPECT_EQ(m_said.last(), "Aborting segmentation");
    EXPECT_EQ(m_said.filter("Solving graph").size(), 0);
}

TEST_F(SliceStackFrameTest, AnAbortDuringTheBuildLeavesAPartialGraphThatIsNotSolved)
{
    // The status of the second surface comes when the first is built.
    QObject::connect(m_cut.watcher.data(), &SegWatcher::statusChanged, [&](const QString& status) {
        if (status.contains("Constructing subgraph " + m_ise->getLongName())) {
            m_cut.watcher->requestAbort();
        }
    });
    const auto graph = m_cut.build();
    EXPECT_FALSE(graph->isGraphValid());
    EXPECT_EQ(graph->solver().GetNodeNum(), 6 * 5);
    const double step[2] = {1.0, 1.0};
    EXPECT_FALSE(graph->addConstantInterSurfaceRegularization(m_ilm, m_ise, {}, 3, 1.0F, step));
    EXPECT_FALSE(graph->regularizeLayerWithExpectedAngle(m_ilm));
    graph->segment();
    EXPECT_EQ(m_said.filter("Graph solved").size(), 0);
    EXPECT_TRUE(m_cut.watcher->getStatistics().empty() ||
                m_cut.watcher->getStatistics().back().cuts.empty());
}

TEST_F(SliceStackFrameTest, AnAbortDuringTheSolveStoresNothing)
{
    const auto graph = m_cut.build();
    QObject::connect(m_cut.watcher.data(), &SegWatcher::statusChanged, [&](const QString& status) {
        if (status == "Solving graph") {
            m_cut.watcher->requestAbort();
        }
    });
    graph->segment();
    EXPECT_EQ(m_said.last(), "Aborting segmentation");
    EXPECT_EQ(m_said.filter("Graph solved").size(), 0);
    for (const unsigned short row : *graph->getLayer(m_ilm)) {
        EXPECT_EQ(row, 0);
    }
}

TEST_F(SliceStackFrameTest, ACutTellsTheWatcherWhatItCost)
{
    m_cut.watcher->beginStepStatistics("segmentCoarse");
    (*m_cut.mask)(0, 0) = 1;
    const auto graph = m_cut.build();
    graph->segment();
    const std::vector<StepStatistics> steps = m_cut.watcher->getStatistics();
    ASSERT_EQ(steps.size(), 1U);
    ASSERT_EQ(steps[0].cuts.size(), 1U);
    const CutStatistics& cut = steps[0].cuts[0];
    EXPECT_EQ(cut.columns, 2U * 5U);
    EXPECT_EQ(cut.nodes, 2U * 5U * 5U);
    EXPECT_EQ(cut.edges, static_cast<std::size_t>(graph->solver().GetEdgeNum()));
    EXPECT_GT(cut.buildSeconds, 0.0);
    EXPECT_GT(cut.solveSeconds, 0.0);
}

TEST_F(SliceStackFrameTest, AnEstimateThatCannotBeCountedIsRefused)
{
    EXPECT_EQ(failure<Exception>([&] { m_cut.build(1e12); }),
              "The Graph could not be built.\nNot enough memory!");
}

TEST_F(SliceStackFrameTest, ARoomThatIsTooSmallGrows)
{
    const auto small = m_cut.build(0.01);
    const auto large = m_cut.build(100.0);
    EXPECT_EQ(m_trace.lines().filter("QPBO. reallocating: ").first(),
              "QPBO. reallocating: 24 edges. Total of 0 megabytes");
    small->segment();
    large->segment();
    EXPECT_EQ(small->solver().GetEdgeNum(), large->solver().GetEdgeNum());
    for (const LayerNamePtr& name : {m_ilm, m_ise}) {
        const VolumeLayerPtr a = small->getLayer(name);
        const VolumeLayerPtr b = large->getLayer(name);
        EXPECT_TRUE(std::equal(a->begin(), a->end(), b->begin()));
    }
}

} // namespace
