#include "SegWorker.h"

#include "TestRetina.h"
#include "TestRunRecorder.h"
#include "TestSlots.h"
#include "kelpException.h"

#include <QMetaMethod>

#include <gmock/gmock.h>

namespace kelp::oct {
namespace {

using test::allSlots;
using test::Retina;
using test::RunRecorder;
using test::Slot;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string aborting = "Aborting segmentation";

struct AnySlot : testing::TestWithParam<Slot>
{
    QSharedPointer<SegWatcher> watcher{new SegWatcher};
    SegWorker worker{watcher};
    RunRecorder recorder{*watcher};

    void SetUp() override
    {
        watcher->addStep();
        watcher->addStep();
    }
};

TEST_P(AnySlot, FallsThroughWhenTheRunIsStopped)
{
    watcher->requestAbort();
    GetParam().call(worker, Retina().makeSegmentation());
    EXPECT_THAT(recorder.events(), ElementsAre("status: " + aborting));
    EXPECT_THAT(recorder.progress(), IsEmpty());
    EXPECT_TRUE(watcher->getStatistics().empty()) << "not even the statistics begin";
}

TEST_P(AnySlot, RefusesANullSegmentation)
{
    GetParam().call(worker, OCTScanSegPtr());
    EXPECT_THAT(recorder.events(),
                ElementsAre("started", std::string("status: ") + GetParam().openingLine,
                            std::string("failure: OCTScan/src/layerSeg/SegWorker::kelp::oct::"
                                        "SegWorker::") +
                                GetParam().name + ": OCT segmentation is null."));
    EXPECT_THAT(recorder.progress(), ElementsAre(0));
    EXPECT_TRUE(watcher->isAborted());
}

TEST_P(AnySlot, RefusesASegmentationWithoutScan)
{
    GetParam().call(worker, OCTScanSegPtr(new OCTScanSegmentation));
    EXPECT_THAT(recorder.failures(),
                ElementsAre(std::string("OCTScan/src/layerSeg/SegWorker::kelp::oct::SegWorker::") +
                            GetParam().name + ": OCT scan is null."));
}

TEST_P(AnySlot, TellsOneFailureAndLeavesTheNextStepToFallThrough)
{
    GetParam().call(worker, OCTScanSegPtr());
    recorder.clear();
    GetParam().call(worker, OCTScanSegPtr());
    EXPECT_THAT(recorder.events(), ElementsAre("status: " + aborting));
}

TEST_P(AnySlot, KeepsItsNameAndTimeInTheStatistics)
{
    GetParam().call(worker, OCTScanSegPtr());
    const std::vector<StepStatistics> statistics = watcher->getStatistics();
    ASSERT_EQ(statistics.size(), 1U);
    EXPECT_EQ(statistics[0].name, GetParam().name);
    EXPECT_GT(statistics[0].peakMemoryBytes, 0U);
}

INSTANTIATE_TEST_SUITE_P(SegWorker, AnySlot, testing::ValuesIn(allSlots()),
                         [](const auto& slot) { return std::string(slot.param.name); });

TEST(SegWorker, NeedsAWatcher)
{
    try {
        SegWorker worker{QSharedPointer<SegWatcher>()};
        FAIL() << "no exception";
    } catch (const Assertion& assertion) {
        EXPECT_STREQ(assertion.what(), "OCTScan/src/layerSeg/SegWorker::kelp::oct::SegWorker::"
                                       "SegWorker: SegWatcher is null.");
    }
}

TEST(SegWorker, HasItsSlotsInTheOrderOfTheMetaObject)
{
    const QMetaObject& meta = SegWorker::staticMetaObject;
    std::vector<std::string> signatures;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        std::string signature = meta.method(i).name().toStdString();
        for (const QByteArray& parameter : meta.method(i).parameterNames()) {
            signature += " " + parameter.toStdString();
        }
        signatures.push_back(signature);
    }
    EXPECT_THAT(signatures,
                ElementsAre("segmentCoarse octSeg", "segmentCoarseMinMax octSeg minDist maxDist",
                            "segmentILMFine octSeg maskETDRSSectors maskCenter",
                            "segmentRPEHumanHealthy octSeg", "segmentBMFine octSeg",
                            "segmentISeIRPEFineDrusen octSeg",
                            "segmentPEFineConstant octSeg rpeThicknessMean rpeThicknessVarWeight "
                            "ilm2isosDistMean ilm2isosDistVarWeight",
                            "segmentInnerHumanHealthy octSeg",
                            "segmentInnerFineConstant octSeg distProps"));
}

} // namespace
} // namespace kelp::oct
