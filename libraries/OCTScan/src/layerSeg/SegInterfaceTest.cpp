#include "SegInterface.h"

#include "SegmentationChains.h"
#include "TestProcessorTime.h"
#include "TestRetina.h"
#include "TestRunRecorder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace kelp::oct {
namespace {

using kelp::test::processorSeconds;
using kelp::test::threadSeconds;
using test::Retina;
using test::RunRecorder;
using test::singleBScanRetina;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string aborting = "Aborting segmentation";

/// A real worker thread, and an event loop for what it says.
struct Interface : testing::Test
{
    int argumentCount = 1;
    char program[5] = "test";
    char* arguments[2] = {program, nullptr};
    QCoreApplication application{argumentCount, arguments};
    SegInterface segInterface;
    RunRecorder recorder{segInterface};

    /// Runs the event loop until the condition holds; fails after a minute.
    template <typename Condition>
    void waitUntil(Condition&& condition)
    {
        QElapsedTimer timer;
        timer.start();
        while (!condition() && timer.elapsed() < 60000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents,
                                            50);
        }
        ASSERT_TRUE(condition()) << "not within a minute";
    }
    void waitForEvent(const std::string& event, int times = 1)
    {
        waitUntil([&] { return recorder.count(event) >= times; });
    }
    /// Lets everything arrive that is still under way.
    void settle(int milliseconds = 50)
    {
        QEventLoop loop;
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
    }
};

TEST_F(Interface, ReportsARunOfThreeStepsOnce)
{
    const OCTScanSegPtr segmentation = Retina().makeSegmentation();
    segInterface.resetSegmentation();
    segInterface.segmentCoarse(segmentation);
    segInterface.segmentCoarse(segmentation);
    segInterface.segmentILMFine(segmentation, false, false);
    waitForEvent("success");
    settle();

    std::vector<std::string> counting;
    for (const std::string& event : recorder.events()) {
        if (event.compare(0, 8, "status: ") != 0 ||
            event.find("Segmentation step") != std::string::npos) {
            counting.push_back(event);
        }
    }
    EXPECT_THAT(counting,
                ElementsAre("started", "status: Segmentation step 1 of 3 has finished \n\n",
                            "status: Segmentation step 2 of 3 has started",
                            "status: Segmentation step 2 of 3 has finished \n\n",
                            "status: Segmentation step 3 of 3 has started", "success"));
    EXPECT_EQ(recorder.progress().front(), 0);
    EXPECT_EQ(recorder.progress().back(), 100);

    const std::vector<StepStatistics> statistics = segInterface.getStatistics();
    ASSERT_EQ(statistics.size(), 3U);
    EXPECT_EQ(statistics[2].name, "segmentILMFine");
    ASSERT_EQ(statistics[2].cuts.size(), 1U);
    EXPECT_EQ(statistics[2].cuts[0].columns, 3U * 64U);
    EXPECT_GT(statistics[2].cuts[0].nodes, 0U);
    EXPECT_GT(statistics[2].seconds, 0.0);
}

TEST_F(Interface, QueuesTheStepsOfEachChainInOrder)
{
    const std::vector<std::string> openingLines[] = {
        {"Start coarse segmentation", "Start ILM segmentation",
         "Start human healthy RPE segmentation", "Start human healthy inner layer segmentation"},
        {"Start coarse segmentation", "Start ILM segmentation",
         "Start Bruch's Membrane segmentation", "Start ISe and IRPE segmentation",
         "Start human healthy inner layer segmentation"},
        {"Start coarse segmentation", "Start ILM segmentation", "Start RPE segmentation",
         "Start inner layer segmentation"}};
    for (const SegmentationChain chain :
         {SegmentationChain::Normal, SegmentationChain::Drusen, SegmentationChain::Mouse}) {
        recorder.clear();
        const OCTScanSegPtr segmentation = Retina().makeSegmentation();
        segInterface.resetSegmentation();
        queueChain(segInterface, segmentation, chain, false, false);
        waitForEvent("success");
        EXPECT_THAT(recorder.failures(), IsEmpty());
        std::vector<std::string> opened;
        for (const std::string& line : recorder.statuses()) {
            if (line.compare(0, 6, "Start ") == 0) {
                opened.push_back(line);
            }
        }
        EXPECT_EQ(opened, openingLines[static_cast<int>(chain)]);
        QStringList steps;
        for (const StepStatistics& step : segInterface.getStatistics()) {
            steps.append(step.name);
        }
        EXPECT_EQ(steps, chainSteps(chain));
    }
}

TEST_F(Interface, PassesTheMaskOptionsOn)
{
    const OCTScanSegPtr segmentation = Retina().makeSegmentation();
    segInterface.resetSegmentation();
    queueChain(segInterface, segmentation, SegmentationChain::Mouse, true, true);
    waitForEvent("success");
    EXPECT_EQ(segmentation->getMask()->getPolygons().size(), 2);
}

TEST_F(Interface, TwoRunsGiveTheSameBytes)
{
    QString first;
    for (int run = 0; run < 2; ++run) {
        recorder.clear();
        const OCTScanSegPtr segmentation = Retina().makeSegmentation();
        segInterface.resetSegmentation();
        queueChain(segInterface, segmentation, SegmentationChain::Normal, false, false);
        waitForEvent("success");
        const QString stored = segmentation->toBase64String();
        EXPECT_FALSE(stored.isEmpty());
        if (run == 0) {
            first = stored;
        } else {
            EXPECT_EQ(stored, first);
        }
    }
}

TEST_F(Interface, ANormalChainOnACircularBScanSucceedsThreeTimes)
{
    const OCTScanSegPtr segmentation = singleBScanRetina("Circular BScan").makeSegmentation();
    segInterface.resetSegmentation();
    queueChain(segInterface, segmentation, SegmentationChain::Normal, false, false);
    waitForEvent("success", 3);
    settle();
    EXPECT_EQ(recorder.count("success"), 3);
    EXPECT_EQ(recorder.count("started"), 2);
    EXPECT_THAT(recorder.failures(), IsEmpty());
    EXPECT_FALSE(segmentation->getVolumeLayer(LayerNameONL::create()).isNull());
}

TEST_F(Interface, AFailingStepTellsOnceAndTheNextOnesFallThrough)
{
    const OCTScanSegPtr star = singleBScanRetina("Star").makeSegmentation();
    segInterface.resetSegmentation();
    queueChain(segInterface, star, SegmentationChain::Drusen, false, false);
    waitForEvent("status: " + aborting, 4);
    settle();
    ASSERT_EQ(recorder.failures().size(), 1U);
    EXPECT_THAT(recorder.failures().front(),
                testing::StartsWith("Could not segment coarse layers.\n"));
    EXPECT_EQ(recorder.count("status: " + aborting), 4);
    EXPECT_EQ(recorder.count("success"), 0);
    EXPECT_TRUE(star->getAllLayerNames().isEmpty());
}

TEST_F(Interface, AStepWithoutAResetAfterAnAbortOnlySaysThatItAborts)
{
    segInterface.resetSegmentation();
    segInterface.abortSegmentation();
    EXPECT_THAT(recorder.events(), ElementsAre("failure: Segmentation was aborted."))
        << "on the caller's thread, inside the call";
    recorder.clear();
    const OCTScanSegPtr segmentation = Retina().makeSegmentation();
    segInterface.segmentCoarse(segmentation);
    waitForEvent("status: " + aborting);
    settle();
    EXPECT_THAT(recorder.events(), ElementsAre("status: " + aborting));
    EXPECT_TRUE(segmentation->getAllLayerNames().isEmpty());
}

/// A scan whose fine cuts take long enough to be caught in the middle.
Retina largeRetina()
{
    Retina large;
    large.aScans = 384;
    large.rows = 300;
    large.bScans = 25;
    return large;
}

TEST_F(Interface, AnAbortInTheSecondStepOfManyStopsTheRest)
{
    // So many that the last is far off, however late the abort gets its turn.
    constexpr int steps = 20;
    const OCTScanSegPtr segmentation = largeRetina().makeSegmentation();
    segInterface.resetSegmentation();
    const auto begun = [&] { return static_cast<int>(segInterface.getStatistics().size()); };
    int begunAtAbort = 0;
    QObject::connect(&segInterface, &SegInterface::statusChanged, &segInterface,
                     [&](const QString& text) {
                         if (text == QString("Segmentation step 2 of %1 has started").arg(steps)) {
                             segInterface.abortSegmentation();
                             begunAtAbort = begun();
                         }
                     });
    segInterface.segmentCoarse(segmentation);
    for (int step = 1; step < steps; ++step) {
        segInterface.segmentILMFine(segmentation, false, false);
    }
    waitForEvent("failure: Segmentation was aborted.");
    const auto fallenThrough = [&] { return recorder.count("status: " + aborting); };
    waitUntil([&] { return fallenThrough() >= steps - begun(); });
    settle(300);
    EXPECT_THAT(recorder.failures(), ElementsAre("Segmentation was aborted."));
    EXPECT_EQ(recorder.count("success"), 0);
    EXPECT_LT(begunAtAbort, steps - 3);
    EXPECT_LE(begun(), begunAtAbort + 1);
    EXPECT_GE(fallenThrough(), 3);
}

TEST_F(Interface, AnAbortInMidSolveStoresNothingOfTheStep)
{
    bool isInMidSolve = false;
    // The solve may be over by the time at which a busy machine gives this thread its turn.
    for (int attempt = 0; attempt < 20 && !isInMidSolve; ++attempt) {
        const OCTScanSegPtr segmentation = largeRetina().makeSegmentation();
        segInterface.resetSegmentation();
        recorder.clear();
        segInterface.segmentCoarse(segmentation);
        waitForEvent("success");
        const QString before = segmentation->toBase64String();
        recorder.clear();

        segInterface.segmentILMFine(segmentation, false, false);
        waitForEvent("status: Solving graph");
        segInterface.abortSegmentation();
        const double start = processorSeconds();
        isInMidSolve = segInterface.getStatistics().back().cuts.empty();
        if (!isInMidSolve) {
            continue;
        }
        waitForEvent("status: " + aborting);
        // The promise is 100 ms; the bound leaves room for sanitizers.
        EXPECT_LT(processorSeconds() - start, 2.0);
        settle();
        EXPECT_THAT(recorder.failures(), ElementsAre("Segmentation was aborted."));
        EXPECT_EQ(recorder.count("success"), 0);
        EXPECT_EQ(segmentation->toBase64String(), before);
    }
    EXPECT_TRUE(isInMidSolve);
}

TEST_F(Interface, AResetInMidRunKillsWhatWasLeftAndTheNextRunIsWhole)
{
    const Retina retina = largeRetina();
    const OCTScanSegPtr former = retina.makeSegmentation();
    segInterface.resetSegmentation();
    queueChain(segInterface, former, SegmentationChain::Normal, false, false);
    waitForEvent("status: Solving graph");

    segInterface.resetSegmentation();
    recorder.clear();
    settle(200);
    EXPECT_THAT(recorder.events(), IsEmpty()) << "nothing of the former run reaches the next one";
    EXPECT_TRUE(segInterface.getStatistics().empty());

    const OCTScanSegPtr segmentation = Retina().makeSegmentation();
    segInterface.resetSegmentation();
    queueChain(segInterface, segmentation, SegmentationChain::Mouse, false, false);
    waitForEvent("success");
    settle();
    EXPECT_THAT(recorder.failures(), IsEmpty());
    EXPECT_EQ(recorder.count("started"), 1);
    EXPECT_EQ(recorder.count("success"), 1);
    EXPECT_THAT(recorder.statuses(), Contains("Segmentation step 4 of 4 has started"));
}

TEST_F(Interface, TellsTheSuccessOfTheWholeRunHoweverLongItsQueueingTakes)
{
    constexpr auto longerThanAStep = std::chrono::milliseconds(500);
    const OCTScanSegPtr segmentation = Retina().makeSegmentation();
    segInterface.resetSegmentation();
    segInterface.segmentCoarse(segmentation);
    std::this_thread::sleep_for(longerThanAStep);
    segInterface.segmentILMFine(segmentation, false, false);
    waitForEvent("success");
    settle();
    EXPECT_EQ(recorder.count("started"), 1);
    EXPECT_EQ(recorder.count("success"), 1);
    EXPECT_THAT(recorder.statuses(), Contains("Segmentation step 2 of 2 has started"));
}

TEST_F(Interface, ARunAfterAnAbortIsWhole)
{
    const OCTScanSegPtr segmentation = Retina().makeSegmentation();
    segInterface.resetSegmentation();
    queueChain(segInterface, segmentation, SegmentationChain::Drusen, false, false);
    waitForEvent("started");
    segInterface.abortSegmentation();

    segInterface.resetSegmentation();
    recorder.clear();
    queueChain(segInterface, segmentation, SegmentationChain::Drusen, false, false);
    waitForEvent("success");
    EXPECT_THAT(recorder.failures(), IsEmpty());
    EXPECT_FALSE(segmentation->getVolumeLayer(LayerNameIRPE::create()).isNull());
}

TEST_F(Interface, EndsAtOnceWithARunUnderWay)
{
    QElapsedTimer timer;
    double start = 0.0;
    {
        SegInterface other;
        const RunRecorder otherRecorder(other);
        other.resetSegmentation();
        queueChain(other, largeRetina().makeSegmentation(), SegmentationChain::Normal, false,
                   false);
        waitUntil([&] { return otherRecorder.count("status: Solving graph") > 0; });
        timer.start();
        start = processorSeconds();
    }
    EXPECT_LT(processorSeconds() - start, 4.0);
    EXPECT_LT(timer.elapsed(), SegInterface::stopMilliseconds)
        << "unwound, not terminated after the time limit";
}

TEST_F(Interface, AStepMethodOnlyCountsAndQueues)
{
    const OCTScanSegPtr segmentation = largeRetina().makeSegmentation();
    segInterface.resetSegmentation();
    const double start = threadSeconds();
    queueChain(segInterface, segmentation, SegmentationChain::Normal, false, false);
    EXPECT_LT(threadSeconds() - start, 0.5);
    EXPECT_FALSE(isChainDone(segInterface.getStatistics(), SegmentationChain::Normal));
    EXPECT_EQ(recorder.count("success"), 0);
}

TEST(SegInterfaceMeta, HasTheSignalsOfTheWatcher)
{
    for (const char* signal :
         {"segmentationStarted()", "statusChanged(QString)", "segmentationSuccess()",
          "segmentationFailure(QString)", "segmentationProgress(int)"}) {
        EXPECT_GE(SegInterface::staticMetaObject.indexOfSignal(signal), 0) << signal;
        EXPECT_GE(SegWatcher::staticMetaObject.indexOfSignal(signal), 0) << signal;
    }
    EXPECT_GE(SegInterface::staticMetaObject.indexOfSlot("abortSegmentation()"), 0);
}

} // namespace
} // namespace kelp::oct
