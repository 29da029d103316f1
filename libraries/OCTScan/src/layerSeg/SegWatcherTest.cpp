#include "SegWatcher.h"

#include "TestRunRecorder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

namespace kelp::oct {
namespace {

using test::RunRecorder;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(SegWatcher, CountsARunOfThreeSteps)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    for (int i = 0; i < 3; ++i) {
        watcher.addStep();
    }
    for (int i = 0; i < 3; ++i) {
        watcher.startStep();
        watcher.finishStep();
    }
    // The first step has no "has started" line and the last no "has finished" line.
    EXPECT_THAT(recorder.events(),
                ElementsAre("started", "status: Segmentation step 1 of 3 has finished \n\n",
                            "status: Segmentation step 2 of 3 has started",
                            "status: Segmentation step 2 of 3 has finished \n\n",
                            "status: Segmentation step 3 of 3 has started", "success"));
}

TEST(SegWatcher, SharesTheProgressEquallyAmongTheSteps)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    for (int i = 0; i < 3; ++i) {
        watcher.addStep();
    }
    watcher.startStep();
    watcher.setStepProgress(0.0F);
    watcher.setStepProgress(1.0F);
    watcher.startStep();
    watcher.setStepProgress(0.5F);
    watcher.startStep();
    watcher.setStepProgress(1.0F);
    EXPECT_THAT(recorder.progress(), ElementsAre(0, 33, 50, 100));
}

TEST(SegWatcher, RoundsTheProgressToTheNearestAndTiesToEven)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    watcher.addStep();
    watcher.startStep();
    watcher.setStepProgress(0.125F); // 12.5
    watcher.setStepProgress(0.375F); // 37.5
    watcher.setStepProgress(0.126F);
    EXPECT_THAT(recorder.progress(), ElementsAre(12, 38, 13));
}

TEST(SegWatcher, IsSilentAboutProgressWithoutPlannedSteps)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    watcher.setStepProgress(0.5F);
    EXPECT_THAT(recorder.progress(), IsEmpty());
}

TEST(SegWatcher, AbortTellsOneFailureAndStopsUntilReset)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    watcher.addStep();
    watcher.addStep();
    watcher.startStep();
    watcher.abort();
    EXPECT_TRUE(watcher.isAborted());
    watcher.setStepProgress(0.7F);
    EXPECT_THAT(recorder.progress(), IsEmpty());
    EXPECT_THAT(recorder.events(), ElementsAre("started", "failure: Segmentation was aborted."));

    watcher.reset();
    EXPECT_FALSE(watcher.isAborted());
}

/// The step looked at the flag just before, and the counters begin anew.
TEST(SegWatcher, TellsNoStartForAStepThatBeginsAfterAnAbort)
{
    SegWatcher watcher;
    watcher.addStep();
    watcher.addStep();
    EXPECT_TRUE(watcher.startStep());
    watcher.finishStep();
    watcher.abort();
    const RunRecorder recorder(watcher);
    EXPECT_FALSE(watcher.startStep());
    EXPECT_THAT(recorder.events(), IsEmpty());

    watcher.reset();
    watcher.addStep();
    EXPECT_TRUE(watcher.startStep());
    EXPECT_THAT(recorder.events(), ElementsAre("started"));
}

TEST(SegWatcher, ReportsNoSuccessForAStepThatEndsAfterAnAbort)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    watcher.addStep();
    watcher.startStep();
    watcher.abort();
    watcher.finishStep();
    EXPECT_EQ(recorder.count("success"), 0);
    EXPECT_TRUE(watcher.isAborted()) << "only reset leaves the stopped state";
}

TEST(SegWatcher, TellsTheFailureBeforeItStopsTheRun)
{
    SegWatcher watcher;
    watcher.addStep();
    watcher.startStep();
    bool abortedWhileTold = true;
    QObject::connect(&watcher, &SegWatcher::segmentationFailure,
                     [&] { abortedWhileTold = watcher.isAborted(); });
    watcher.fail("text");
    EXPECT_FALSE(abortedWhileTold);
    EXPECT_TRUE(watcher.isAborted());
}

TEST(SegWatcher, ASuccessLeavesItReadyForTheNextRun)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    for (int run = 0; run < 2; ++run) {
        watcher.addStep();
        watcher.startStep();
        watcher.finishStep();
    }
    EXPECT_THAT(recorder.events(), ElementsAre("started", "success", "started", "success"));
}

TEST(SegWatcher, AStepWithinAStepEndsTheRunEarlyAndItReportsThreeSuccesses)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    for (int i = 0; i < 4; ++i) {
        watcher.addStep();
    }
    for (int i = 0; i < 2; ++i) {
        watcher.startStep();
        watcher.finishStep();
    }
    watcher.startStep(); // the outer one
    watcher.startStep(); // the inner one
    watcher.finishStep();
    watcher.finishStep();
    watcher.startStep(); // the last one queued
    watcher.setStepProgress(0.5F);
    watcher.finishStep();
    EXPECT_THAT(recorder.events(),
                ElementsAre("started", "status: Segmentation step 1 of 4 has finished \n\n",
                            "status: Segmentation step 2 of 4 has started",
                            "status: Segmentation step 2 of 4 has finished \n\n",
                            "status: Segmentation step 3 of 4 has started",
                            "status: Segmentation step 4 of 4 has started", "success", "success",
                            "started", "success"));
    EXPECT_THAT(recorder.progress(), IsEmpty());
}

TEST(SegWatcher, ResetClearsTheFlagThatTheSolverReads)
{
    SegWatcher watcher;
    const std::atomic<bool>* const flag = watcher.getAbortFlag();
    EXPECT_FALSE(*flag);
    watcher.requestAbort();
    EXPECT_TRUE(*flag);
    watcher.reset();
    EXPECT_FALSE(*flag);
    EXPECT_EQ(watcher.getAbortFlag(), flag);
}

TEST(SegWatcher, ARequestedAbortIsSilentAndKeepsTheCounters)
{
    SegWatcher watcher;
    const RunRecorder recorder(watcher);
    watcher.addStep();
    watcher.startStep();
    watcher.requestAbort();
    watcher.setStepProgress(0.0F);
    EXPECT_THAT(recorder.events(), ElementsAre("started"));
    EXPECT_THAT(recorder.progress(), ElementsAre(0));
}

TEST(SegWatcher, KeepsTheStatisticsOfNestedStepsApart)
{
    SegWatcher watcher;
    watcher.addCutStatistics({}); // outside of any step: lost
    watcher.beginStepStatistics("outer");
    watcher.beginStepStatistics("inner");
    CutStatistics cut;
    cut.nodes = 7;
    watcher.addCutStatistics(cut);
    watcher.endStepStatistics();
    watcher.endStepStatistics();
    watcher.endStepStatistics(); // nothing is open any more

    const std::vector<StepStatistics> statistics = watcher.getStatistics();
    ASSERT_EQ(statistics.size(), 2U);
    EXPECT_EQ(statistics[0].name, "outer");
    EXPECT_TRUE(statistics[0].cuts.empty());
    EXPECT_EQ(statistics[1].name, "inner");
    ASSERT_EQ(statistics[1].cuts.size(), 1U);
    EXPECT_EQ(statistics[1].cuts[0].nodes, 7U);
    EXPECT_GE(statistics[0].seconds, statistics[1].seconds);
    EXPECT_GT(statistics[1].peakMemoryBytes, 1000000U);

    watcher.reset();
    EXPECT_TRUE(watcher.getStatistics().empty());
}

/// Shared memory would be a data race, which the thread sanitizer reports: nothing but the watcher
/// puts the two threads in order.
TEST(SegWatcher, LetsACopyOfTheStatisticsBeUsedWhileTheStepWritesOn)
{
    SegWatcher watcher;
    watcher.beginStepStatistics("segmentCoarse");
    watcher.addCutStatistics({});
    watcher.addCutQuality({{"ILM", {{1, 0, 0, 0, 0}}}}, 1.0);
    std::atomic<bool> isUsed{false};
    std::thread worker([&] {
        while (!isUsed.load(std::memory_order_relaxed)) {
            std::this_thread::yield();
        }
        watcher.addCutStatistics({});
        watcher.addCutQuality({{"BM", {{1, 0, 0, 0, 0}}}}, 1.0);
        watcher.endStepStatistics();
    });
    watcher.getStatistics().back().name.append(" of a copy");
    watcher.getStatistics().back().cuts.push_back({});
    watcher.getStatistics().back().surfaces.back().bScans.push_back({});
    isUsed.store(true, std::memory_order_relaxed);
    worker.join();
    const std::vector<StepStatistics> steps = watcher.getStatistics();
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(steps[0].name, "segmentCoarse");
    EXPECT_EQ(steps[0].cuts.size(), 2U);
    ASSERT_EQ(steps[0].surfaces.size(), 2U);
    EXPECT_EQ(steps[0].surfaces[0].bScans.size(), 1U);
}

TEST(SegWatcher, MayBeCalledFromTwoThreads)
{
    SegWatcher watcher;
    constexpr int rounds = 2000;
    std::thread worker([&] {
        for (int i = 0; i < rounds; ++i) {
            watcher.addStep();
            watcher.startStep();
            watcher.setStepProgress(0.5F);
            watcher.addCutStatistics({});
        }
    });
    for (int i = 0; i < rounds; ++i) {
        watcher.requestAbort();
        watcher.getStatistics();
        watcher.reset();
    }
    worker.join();
    watcher.reset();
    EXPECT_FALSE(watcher.isAborted());
}

} // namespace
} // namespace kelp::oct
