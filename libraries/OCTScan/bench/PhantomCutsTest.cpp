#include "BoostCut.h"
#include "HeidelbergExport.h"
#include "OCTDecoderHeidelbergXML.h"
#include "OCTScanSegmentation.h"
#include "Phantom.h"
#include "SegInterface.h"
#include "SegmentationChains.h"
#include "SliceStackGraphQPBO.h"
#include "TraceCapture.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

using namespace kelp::oct;
using kelp::oct::bench::BoostMethod;
using kelp::oct::bench::solveWithBoost;

/// What the observers, which are plain functions, have seen.
BoostMethod method = BoostMethod::BoykovKolmogorov;
std::vector<signed char> expected;
int cuts = 0;
long long differences = 0;
long long ones = 0;
long long nodes = 0;

void solveFirst(const QpboGraph<int>& graph)
{
    expected = solveWithBoost(graph, method).labels;
}

void compare(const QpboGraph<int>& graph)
{
    ++cuts;
    nodes += graph.GetNodeNum();
    for (int i = 0; i < graph.GetNodeNum(); ++i) {
        const int label = graph.GetLabel(i);
        differences += label != expected[static_cast<std::size_t>(i)];
        ones += label == 1;
    }
}

class PhantomCutsTest : public testing::Test
{
protected:
    PhantomCutsTest()
    {
        createOCTDecoderHeidelbergXMLFactory();
        cuts = 0;
        differences = ones = nodes = 0;
        SliceStackGraphQPBO::setSolveObservers(solveFirst, compare);
    }
    ~PhantomCutsTest() override { SliceStackGraphQPBO::setSolveObservers(nullptr, nullptr); }

    void runChain(SegmentationChain chain, kelp::phantom::Kind kind, BoostMethod wantedMethod)
    {
        method = wantedMethod;
        const QTemporaryDir folder;
        kelp::phantom::Options options;
        options.kind = kind;
        options.aScans = 64;
        options.bScans = 7;
        const auto written = kelp::phantom::writeExport(folder.path(), options);
        OCTScanPtr scan = makeScan(written.xmlPath, written.seriesId, {});
        scan->doBinLoad();
        const OCTScanSegPtr segmentation(new OCTScanSegmentation(scan));
        segmentation->setEmptySegmentation();

        SegInterface segInterface;
        QEventLoop loop;
        QString failure;
        QObject::connect(&segInterface, &SegInterface::segmentationSuccess, &loop,
                         &QEventLoop::quit);
        QObject::connect(&segInterface, &SegInterface::segmentationFailure, &loop,
                         [&](const QString& message) {
                             failure = message;
                             loop.quit();
                         });
        segInterface.resetSegmentation();
        queueChain(segInterface, segmentation, chain, false, false);
        loop.exec();
        EXPECT_TRUE(failure.isEmpty()) << failure.toStdString();
    }

    test::TraceCapture m_trace;
};

TEST_F(PhantomCutsTest, EveryCutOfTheNormalChainHasTheLabelsOfBoostsBoykovKolmogorov)
{
    runChain(SegmentationChain::Normal, kelp::phantom::Kind::Normal, BoostMethod::BoykovKolmogorov);
    EXPECT_EQ(cuts, 4);
    EXPECT_EQ(differences, 0);
    EXPECT_GT(nodes, 50000);
    EXPECT_GT(ones, nodes / 10);
    EXPECT_LT(ones, nodes);
}

TEST_F(PhantomCutsTest, EveryCutOfTheDrusenChainHasTheLabelsOfBoostsPushRelabel)
{
    runChain(SegmentationChain::Drusen, kelp::phantom::Kind::Drusen, BoostMethod::PushRelabel);
    EXPECT_GE(cuts, 4);
    EXPECT_EQ(differences, 0);
    EXPECT_GT(ones, nodes / 10);
}

TEST_F(PhantomCutsTest, EveryCutOfTheMouseChainHasTheLabelsOfBoostsBoykovKolmogorov)
{
    runChain(SegmentationChain::Mouse, kelp::phantom::Kind::Mouse, BoostMethod::BoykovKolmogorov);
    EXPECT_EQ(cuts, 4);
    EXPECT_EQ(differences, 0);
    EXPECT_GT(ones, nodes / 10);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    // The worker of a chain reports through an event loop.
    const QCoreApplication application(argumentCount, arguments);
    testing::InitGoogleTest(&argumentCount, arguments);
    return RUN_ALL_TESTS();
}
