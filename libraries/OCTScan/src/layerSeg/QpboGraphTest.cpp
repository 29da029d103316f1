#include "QpboGraph.h"

#include "QpboTestEnergy.h"
#include "TestProcessorTime.h"
#include "kelpTrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace {

using kelp::oct::QpboGraph;
using kelp::oct::test::RandomEnergy;
using testing::HasSubstr;

constexpr int hardWeight = 1000000000;

std::vector<int> labelsOf(const QpboGraph<int>& graph)
{
    std::vector<int> labels;
    labels.reserve(static_cast<std::size_t>(graph.GetNodeNum()));
    for (int i = 0; i < graph.GetNodeNum(); ++i) {
        labels.push_back(graph.GetLabel(i));
    }
    return labels;
}

/// Collects the trace lines of its lifetime.
class TraceCapture
{
public:
    TraceCapture() { kelp::Trace::redirect(&m_text); }
    ~TraceCapture() { kelp::Trace::redirect(nullptr); }
    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
};

class QpboGraphTest : public testing::Test
{
protected:
    TraceCapture m_trace;
};

TEST_F(QpboGraphTest, SubmodularLabelsAreTheMinimumWithTheFewestOnes)
{
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        const RandomEnergy energy = RandomEnergy::submodular(random);
        QpboGraph<int> graph(1, 1, nullptr);
        energy.addTo(graph);
        graph.Solve();
        ASSERT_EQ(graph.GetStage(), 0);
        ASSERT_EQ(labelsOf(graph), energy.minimumWithFewestOnes()) << "round " << round;
        ASSERT_EQ(graph.GetTwiceLowerBound(), 2 * energy.minimum()) << "round " << round;
        graph.ComputeWeakPersistencies();
        ASSERT_EQ(labelsOf(graph), energy.minimumWithFewestOnes()) << "round " << round;
    }
}

TEST_F(QpboGraphTest, PartsChangeNoLabel)
{
    std::mt19937 random(7);
    for (int round = 0; round < 1000; ++round) {
        const RandomEnergy energy = RandomEnergy::submodular(random);
        QpboGraph<int> graph(1, 1, nullptr);
        energy.addTo(graph);
        for (int i = 0; i < graph.GetNodeNum(); ++i) {
            graph.SetPart(i, 1, static_cast<int>(random() % 4));
        }
        graph.Solve();
        ASSERT_EQ(labelsOf(graph), energy.minimumWithFewestOnes()) << "round " << round;
        ASSERT_EQ(graph.GetTwiceLowerBound(), 2 * energy.minimum()) << "round " << round;
    }
}

TEST_F(QpboGraphTest, LabelsOfAnyEnergyArePersistent)
{
    std::mt19937 random(2);
    int decided = 0;
    int open = 0;
    int decidedWeakly = 0;
    for (int round = 0; round < 3000; ++round) {
        const RandomEnergy energy = RandomEnergy::any(random);
        QpboGraph<int> graph(1, 1, nullptr);
        energy.addTo(graph);
        graph.Solve();
        ASSERT_EQ(graph.GetStage(), graph.AreAllEdgesSubmodular() ? 0 : 1);
        ASSERT_LE(graph.GetTwiceLowerBound(), 2 * energy.minimum());
        const std::vector<int> labels = labelsOf(graph);
        if (graph.GetStage() == 1) {
            // Every minimum has the labels that roof duality decides.
            for (const std::vector<int>& minimum : energy.minima()) {
                for (std::size_t i = 0; i < labels.size(); ++i) {
                    ASSERT_TRUE(labels[i] < 0 || labels[i] == minimum[i]) << "round " << round;
                }
            }
        }
        graph.ComputeWeakPersistencies();
        const std::vector<int> weak = labelsOf(graph);
        ASSERT_TRUE(energy.hasMinimumLike(weak)) << "round " << round;
        for (std::size_t i = 0; i < labels.size(); ++i) {
            ASSERT_TRUE(labels[i] < 0 || weak[i] == labels[i]);
            decided += labels[i] >= 0;
            open += weak[i] < 0;
            decidedWeakly += labels[i] < 0 && weak[i] >= 0;
        }
    }
    // The energies reach every outcome.
    EXPECT_GT(decided, 1000);
    EXPECT_GT(open, 100);
    EXPECT_GT(decidedWeakly, 100);
}

TEST_F(QpboGraphTest, AFrustratedTriangleIsLeftOpen)
{
    // Three nodes that all want to differ: one of the three edges must cost 1.
    QpboGraph<int> graph(3, 3, nullptr);
    graph.AddNode(3);
    graph.AddPairwiseTerm(0, 1, 1, 0, 0, 1);
    graph.AddPairwiseTerm(1, 2, 1, 0, 0, 1);
    graph.AddPairwiseTerm(0, 2, 1, 0, 0, 1);
    graph.Solve();
    EXPECT_EQ(labelsOf(graph), (std::vector<int>{-1, -1, -1}));
    EXPECT_EQ(graph.GetTwiceLowerBound(), 0);
}

TEST_F(QpboGraphTest, AHardTermKeepsTheEnergySubmodularAndANegativeWeightDoesNot)
{
    QpboGraph<int> graph(4, 4, nullptr);
    graph.AddNode(2);
    graph.AddPairwiseTerm(0, 1, 0, 0, hardWeight, 0);
    EXPECT_TRUE(graph.AreAllEdgesSubmodular());
    graph.AddUnaryTerm(0, 5, 0);
    graph.AddUnaryTerm(1, 0, 3);
    graph.Solve();
    EXPECT_EQ(graph.GetStage(), 0);
    EXPECT_EQ(labelsOf(graph), (std::vector<int>{1, 1}));

    graph.Reset();
    graph.AddNode(2);
    graph.AddPairwiseTerm(0, 1, 0, -7, -7, 0);
    EXPECT_FALSE(graph.AreAllEdgesSubmodular());
    graph.AddUnaryTerm(0, 0, 2);
    graph.Solve();
    EXPECT_EQ(graph.GetStage(), 1);
    EXPECT_EQ(labelsOf(graph), (std::vector<int>{0, 1}));
}

TEST_F(QpboGraphTest, WithoutUnaryTermsAllLabelsAreZero)
{
    QpboGraph<int> graph(5, 5, nullptr);
    graph.AddNode(5);
    for (int i = 0; i < 4; ++i) {
        graph.AddPairwiseTerm(i, i + 1, 0, 3, hardWeight, 0);
    }
    graph.Solve();
    EXPECT_EQ(labelsOf(graph), std::vector<int>(5, 0));
}

TEST_F(QpboGraphTest, AnEmptyGraphCanBeSolved)
{
    QpboGraph<int> graph(0, 0, nullptr);
    graph.Solve();
    graph.ComputeWeakPersistencies();
    EXPECT_EQ(graph.GetNodeNum(), 0);
}

TEST_F(QpboGraphTest, ANodeOfTheFullFirstHalfHasItsArcs)
{
    QpboGraph<int> graph(12, 16, nullptr);
    ASSERT_EQ(graph.GetNodeMax(), 16);
    graph.AddNode(16);
    graph.AddUnaryTerm(0, 9, 0);
    for (int i = 0; i < 15; ++i) {
        graph.AddPairwiseTerm(i, i + 1, 0, 2, 2, 0);
    }
    graph.AddPairwiseTerm(14, 15, 0, -1, -1, 0);
    graph.Solve();
    graph.ComputeWeakPersistencies();
    EXPECT_EQ(graph.GetNodeMax(), 16);
    EXPECT_EQ(graph.GetStage(), 1);
    EXPECT_EQ(labelsOf(graph), std::vector<int>(16, 1));
}

TEST_F(QpboGraphTest, TheRoomAskedForIsPrintedOnce)
{
    QpboGraph<int> graph(1000000, 2000000, nullptr);
    EXPECT_EQ(m_trace.text(), "-----------------------\n-----------------------\nQPBO\n"
                              "Memory requirements initial: 1000004 nodes\n2000000 edges\n"
                              "112 megabytes total\n"
                              "-----------------------\n-----------------------\n");
}

TEST_F(QpboGraphTest, GrowthKeepsIdsLabelsAndCapacitiesAndPrintsOneLine)
{
    std::mt19937 random(3);
    QpboGraph<int> graph(0, 0, nullptr);
    for (int i = 0; i < 16; ++i) {
        ASSERT_EQ(graph.AddNode(), i);
        graph.AddUnaryTerm(i, 0, i % 2 ? 5 : -5);
    }
    graph.Solve();
    const std::vector<int> before = labelsOf(graph);
    EXPECT_THAT(m_trace.text(), testing::Not(HasSubstr("reallocating")));
    EXPECT_EQ(graph.AddNode(), 16);
    EXPECT_THAT(m_trace.text(),
                testing::EndsWith("QPBO. reallocating: 24 nodes. Total of 0 megabytes\n"));
    EXPECT_EQ(graph.GetLabel(16), 0);
    std::vector<int> after = labelsOf(graph);
    after.pop_back();
    EXPECT_EQ(after, before);
    graph.Solve();
    after = labelsOf(graph);
    after.pop_back();
    EXPECT_EQ(after, before);

    EXPECT_EQ(graph.AddNode(100), 17);
    EXPECT_EQ(graph.GetNodeMax(), 118);
}

TEST_F(QpboGraphTest, EdgesGrowByHalfAndPrintALineEachTime)
{
    QpboGraph<int> graph(2, 16, nullptr);
    graph.AddNode(2);
    for (int e = 0; e < 16; ++e) {
        ASSERT_EQ(graph.AddPairwiseTerm(0, 1, 0, 0, 1, 0), e);
    }
    EXPECT_THAT(m_trace.text(), testing::Not(HasSubstr("reallocating")));
    EXPECT_EQ(graph.AddPairwiseTerm(0, 1, 0, 0, 1, 0), 16);
    EXPECT_THAT(m_trace.text(),
                testing::EndsWith("QPBO. reallocating: 24 edges. Total of 0 megabytes\n"));
    graph.AddUnaryTerm(0, 100, 0);
    graph.AddUnaryTerm(1, 0, 18);
    graph.Solve();
    // All seventeen edges count.
    EXPECT_EQ(labelsOf(graph), (std::vector<int>{1, 0}));
    EXPECT_EQ(graph.GetTwiceLowerBound(), 2 * 17);
}

TEST_F(QpboGraphTest, TermsMayBeAddedToASolvedGraphInEitherStage)
{
    std::mt19937 random(4);
    for (int round = 0; round < 1000; ++round) {
        const RandomEnergy first = RandomEnergy::any(random);
        const RandomEnergy second = RandomEnergy::any(random);
        const RandomEnergy sum = first + second;
        QpboGraph<int> together(1, 1, nullptr);
        sum.addTo(together);
        together.Solve();
        // A start without any room, so that the second part also grows the graph.
        QpboGraph<int> apart(0, 0, nullptr);
        first.addTo(apart);
        apart.Solve();
        second.addTo(apart);
        apart.Solve();
        if (apart.GetStage() == together.GetStage()) {
            ASSERT_EQ(labelsOf(apart), labelsOf(together)) << "round " << round;
        }
        ASSERT_EQ(apart.GetTwiceLowerBound(), together.GetTwiceLowerBound()) << "round " << round;
    }
}

TEST_F(QpboGraphTest, ALaterNodeBeyondTheRoomJoinsAGraphInTheSecondStage)
{
    QpboGraph<int> graph(0, 0, nullptr);
    graph.AddNode(16);
    graph.AddUnaryTerm(0, 0, 10);
    for (int i = 0; i < 15; ++i) {
        graph.AddPairwiseTerm(i, i + 1, 0, -4, -4, 0);
    }
    graph.Solve();
    ASSERT_EQ(graph.GetStage(), 1);
    ASSERT_EQ(graph.AddNode(), 16);
    graph.AddPairwiseTerm(15, 16, 0, -4, -4, 0);
    graph.Solve();
    for (int i = 0; i <= 16; ++i) {
        EXPECT_EQ(graph.GetLabel(i), i % 2);
    }
}

TEST_F(QpboGraphTest, AfterResetTheNextNodeHasIdZeroAndNothingIsLeft)
{
    QpboGraph<int> graph(16, 16, nullptr);
    graph.AddNode(3);
    graph.AddUnaryTerm(0, 7, 0);
    graph.AddPairwiseTerm(0, 1, 1, 0, 0, 1);
    graph.Solve();
    const int nodeMax = graph.GetNodeMax();
    graph.Reset();
    EXPECT_EQ(graph.GetNodeNum(), 0);
    EXPECT_EQ(graph.GetEdgeNum(), 0);
    EXPECT_EQ(graph.GetEnergyConstant(), 0);
    EXPECT_EQ(graph.GetStage(), 0);
    EXPECT_TRUE(graph.AreAllEdgesSubmodular());
    EXPECT_EQ(graph.GetNodeMax(), nodeMax);
    EXPECT_EQ(graph.AddNode(2), 0);
    graph.Solve();
    EXPECT_EQ(labelsOf(graph), (std::vector<int>{0, 0}));
}

TEST_F(QpboGraphTest, AUnaryCapacityThatWouldLeaveItsTypeSaturates)
{
    constexpr int most = std::numeric_limits<int>::max();
    QpboGraph<int> graph(4, 4, nullptr);
    graph.AddNode(2);
    for (int k = 0; k < 5; ++k) {
        graph.AddUnaryTerm(0, 0, hardWeight);
        graph.AddUnaryTerm(1, most, std::numeric_limits<int>::min());
    }
    std::vector<int> capacities;
    graph.forEachNode([&](int, int capacity) { capacities.push_back(capacity); });
    EXPECT_EQ(capacities, (std::vector<int>{most, -most}));
    EXPECT_EQ(graph.GetEnergyConstant(), 5LL * most);
    graph.AddPairwiseTerm(0, 1, 0, most, most, 0);
    graph.Solve();
    EXPECT_EQ(graph.GetLabel(0), graph.GetLabel(1));
}

TEST_F(QpboGraphTest, AddToUnaryCapacityLeavesTheEnergyConstant)
{
    QpboGraph<int> graph(4, 4, nullptr);
    graph.AddNode();
    graph.AddToUnaryCapacity(0, -1000);
    graph.AddUnaryTerm(0, 7, 3);
    graph.AddPairwiseTerm(0, 0, 5, 5, 5, 5);
    EXPECT_EQ(graph.GetEnergyConstant(), 12);
    graph.Solve();
    EXPECT_EQ(graph.GetLabel(0), 1);
}

TEST_F(QpboGraphTest, TheTermsCanBeVisitedBeforeTheSolve)
{
    QpboGraph<int> graph(8, 8, nullptr);
    graph.AddNode(4);
    graph.AddUnaryTerm(2, 1, 5);
    graph.AddPairwiseTerm(2, 3, 0, 0, 9, 0);
    graph.AddPairwiseTerm(1, 2, 0, 0, 9, 0);
    graph.AddPairwiseTerm(0, 1, 0, 0, 9, 0);
    graph.AddPairwiseTerm(0, 2, 0, 1, 2, 0);
    graph.AddPairwiseTerm(1, 3, 0, 1, 2, 0);
    std::vector<std::vector<int>> edges;
    graph.forEachEdge([&](int i, int j, int cap, int reverse) {
        edges.push_back({i, j, cap, reverse});
    });
    EXPECT_EQ(edges, (std::vector<std::vector<int>>{
                         {2, 3, 0, 9}, {1, 2, 0, 9}, {0, 1, 0, 9}, {0, 2, 1, 2}, {1, 3, 1, 2}}));
    std::vector<int> capacities;
    graph.forEachNode([&](int, int capacity) { capacities.push_back(capacity); });
    EXPECT_EQ(capacities, (std::vector<int>{0, 0, 4, 0}));
}

TEST_F(QpboGraphTest, MoreThanCanBeCountedIsRefusedThroughTheCallback)
{
    static std::string message;
    message.clear();
    const auto remember = [](const char* text) { message = text; };
    constexpr int most = std::numeric_limits<int>::max();
    try {
        QpboGraph<int> graph(16, most, remember);
        FAIL() << "no exception";
    } catch (const std::bad_alloc& failure) {
        EXPECT_STREQ(failure.what(), "bad allocation");
    }
    EXPECT_EQ(message, "Not enough memory!");
    EXPECT_THROW(QpboGraph<int>(most, 16, remember), std::bad_alloc);
    EXPECT_THROW(QpboGraph<int>(most, 16, nullptr), std::bad_alloc);
}

TEST_F(QpboGraphTest, GrowthPastWhatCanBeCountedIsRefusedThroughTheCallback)
{
    QpboGraph<int> graph(16, 16, [](const char* text) { throw std::runtime_error(text); });
    graph.AddNode(5);
    EXPECT_THROW(graph.AddNode(std::numeric_limits<int>::max()), std::runtime_error);
    // A callback that raises leaves the graph as it was.
    EXPECT_EQ(graph.GetNodeNum(), 5);
    EXPECT_EQ(graph.AddNode(), 5);
}

/// A grid of nodes with weak links and random capacities, which takes the trees seconds.
void addHardGrid(QpboGraph<int>& graph, int side)
{
    std::mt19937 random(6);
    std::uniform_int_distribution<int> capacity(-1000, 1000);
    graph.AddNode(side * side);
    for (int i = 0; i < side * side; ++i) {
        graph.AddToUnaryCapacity(i, capacity(random));
    }
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const int i = y * side + x;
            if (x + 1 < side) {
                graph.AddPairwiseTerm(i, i + 1, 0, 900, 900, 0);
            }
            if (y + 1 < side) {
                graph.AddPairwiseTerm(i, i + side, 0, 900, 900, 0);
            }
        }
    }
}

/// The thread sanitizer makes every memory access about this much slower.
#ifdef __SANITIZE_THREAD__
constexpr double instrumentationFactor = 15.0;
#else
constexpr double instrumentationFactor = 1.0;
#endif

TEST_F(QpboGraphTest, ASolveUnderWayEndsWithinATenthOfASecondOfTheFlag)
{
    std::atomic<bool> flag{false};
    QpboGraph<int> graph(0, 0, nullptr);
    graph.setAbortFlag(&flag);
    addHardGrid(graph, 1500);
    double flagTime = 0.0;
    std::thread user([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        // The flag first: this thread may have to stand still between the two.
        flag = true;
        flagTime = kelp::test::processorSeconds();
    });
    graph.Solve();
    const double end = kelp::test::processorSeconds();
    const bool wasUnderWay = flag;
    user.join();
    ASSERT_TRUE(wasUnderWay) << "the solve was over before the flag";
    EXPECT_LT(end - flagTime, 0.1 * instrumentationFactor);
    const std::vector<int> labels = labelsOf(graph);
    EXPECT_EQ(std::count(labels.begin(), labels.end(), 0), graph.GetNodeNum());
}

TEST_F(QpboGraphTest, ASolveThatWasEndedCanBeDoneAgain)
{
    std::atomic<bool> flag{true};
    QpboGraph<int> graph(0, 0, nullptr);
    QpboGraph<int> other(0, 0, nullptr);
    addHardGrid(graph, 40);
    addHardGrid(other, 40);
    graph.setAbortFlag(&flag);
    graph.Solve();
    flag = false;
    graph.Solve();
    other.Solve();
    EXPECT_EQ(labelsOf(graph), labelsOf(other));
}

TEST_F(QpboGraphTest, RoomThatNothingUsesCostsNoMemory)
{
    const auto residentPages = [] {
        std::ifstream file("/proc/self/statm");
        long size = 0;
        long resident = 0;
        file >> size >> resident;
        return resident;
    };
    const long before = residentPages();
    QpboGraph<int> graph(50000000, 200000000, nullptr);
    graph.AddNode(10);
    graph.Reset();
    graph.AddNode(10);
    // The room asked for is over ten gigabytes; a page here and there is in use.
    EXPECT_LT((residentPages() - before) * 4096, 64L << 20);
}

} // namespace
