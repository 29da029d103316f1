#include "SegWorker.h"
#include "TestRetina.h"
#include "TestRunRecorder.h"
#include "TestSlots.h"

#include <gmock/gmock.h>

namespace kelp::oct {
namespace {

using test::Retina;
using test::RunRecorder;
using test::Slot;
using testing::HasSubstr;
using testing::StartsWith;

/// The sentences of steps whose inputs are not there or do not fit.
struct Failures : testing::Test
{
    std::string failureOf(const std::function<void(SegWorker&, const OCTScanSegPtr&)>& call,
                          const OCTScanSegPtr& segmentation)
    {
        const QSharedPointer<SegWatcher> watcher(new SegWatcher);
        SegWorker worker(watcher);
        const RunRecorder recorder(*watcher);
        watcher->addStep();
        call(worker, segmentation);
        EXPECT_EQ(recorder.failures().size(), 1U);
        EXPECT_EQ(recorder.count("success"), 0);
        return recorder.failures().empty() ? std::string() : recorder.failures().front();
    }
    std::string failureOf(const std::string& slot, const OCTScanSegPtr& segmentation)
    {
        for (const Slot& candidate : test::allSlots()) {
            if (candidate.name == slot) {
                return failureOf(candidate.call, segmentation);
            }
        }
        ADD_FAILURE() << "no slot " << slot;
        return {};
    }
    OCTScanSegPtr segmentationOf(const QString& pattern)
    {
        return test::singleBScanRetina(pattern).makeSegmentation();
    }
};

TEST_F(Failures, StarScansFailAtTheFirstStep)
{
    const std::string text = "SegInterface::segmentILMCoarse: trying to segment Star OCT scan "
                             "pattern, but only volumes and straight and circular BScans can be "
                             "segmented";
    for (const char* slot : {"segmentCoarse", "segmentCoarseMinMax"}) {
        const std::string failure = failureOf(slot, segmentationOf("Star"));
        EXPECT_THAT(failure, StartsWith("Could not segment coarse layers.\n"));
        EXPECT_THAT(failure, HasSubstr(text));
    }
}

TEST_F(Failures, EachStepNamesTheLayersThatAreMissing)
{
    const OCTScanSegPtr empty = Retina().makeSegmentation();
    EXPECT_THAT(failureOf("segmentILMFine", empty),
                StartsWith("Could not get ILM coarse layer.\n"));
    EXPECT_THAT(failureOf("segmentRPEHumanHealthy", empty),
                StartsWith("Could not get the neccessary layers.\n"));
    EXPECT_THAT(failureOf("segmentBMFine", empty),
                StartsWith("Could get the ILM or RPE coarse layers.\n"));
    EXPECT_THAT(failureOf("segmentISeIRPEFineDrusen", empty),
                StartsWith("Could not get the required layers.\n"));
    EXPECT_THAT(failureOf("segmentPEFineConstant", empty),
                StartsWith("Could not get required layers.\n"));
    EXPECT_THAT(failureOf("segmentInnerHumanHealthy", empty),
                StartsWith("Could not get the required layers.\n"));
    EXPECT_THAT(failureOf("segmentInnerFineConstant", empty),
                StartsWith("Could not get ILM layer.\n"));

    const OCTScanSegPtr withILM = Retina().makeSegmentation();
    withILM->setVolumeLayer(test::constantSurface(withILM, 40), LayerNameILM::create());
    EXPECT_THAT(failureOf("segmentInnerFineConstant", withILM),
                StartsWith("Could not get ISe layer.\n"));
}

TEST_F(Failures, StepsNameThePatternsThatTheyDoNotKnow)
{
    // A star has no volume size, so its surfaces are set by the count of its A-scans.
    const OCTScanSegPtr star = segmentationOf("Star");
    const auto layer = VolumeLayerPtr::create(1U, 64U);
    for (const LayerNamePtr& name :
         {LayerNameILMCoarse::create(), LayerNameISeCoarse::create(), LayerNameILM::create(),
          LayerNameISe::create(), LayerNameBM::create()}) {
        star->setVolumeLayer(layer, name);
    }
    EXPECT_EQ(failureOf("segmentILMFine", star),
              "Could not segment ILM layer.\nTrying to segment Star OCT scan pattern, but only "
              "volumes and straight and circular bScans can be segmented");
    EXPECT_EQ(failureOf("segmentBMFine", star),
              "Segmentation failed.\nTrying to segment Star OCT scan pattern, but only volumes and "
              "straight and circular bScans can be segmented");
    EXPECT_EQ(failureOf("segmentRPEHumanHealthy", star),
              "OCTScan/src/layerSeg/SegWorker::kelp::oct::SegWorker::segmentRPEHumanHealthy: Not "
              "implemented for OCT scan pattern Star");
    EXPECT_EQ(failureOf("segmentInnerHumanHealthy", star),
              "OCTScan/src/layerSeg/SegWorker::kelp::oct::SegWorker::segmentInnerHumanHealthy: Not "
              "implemented for OCT scan pattern Star");
    EXPECT_EQ(failureOf("segmentPEFineConstant", star),
              "Segmentation failed.\nOCTScan/src/layerSeg/SegWorker::kelp::oct::SegWorker::"
              "segmentPEFineConstantPrivate: Trying to segment Star OCT scan pattern, but only "
              "volumes and straight or cirular BScans can be segmented");
    // These two do not look at the pattern; the scan itself refuses.
    EXPECT_THAT(failureOf("segmentISeIRPEFineDrusen", star), StartsWith("Segmentation failed.\n"));
    EXPECT_THAT(failureOf("segmentInnerFineConstant", star), StartsWith("Segmentation failed.\n"));
}

TEST_F(Failures, ATinyScanIsRefusedInWords)
{
    for (const auto& [aScans, rows] : {std::pair(15, 160), std::pair(64, 15), std::pair(2, 2)}) {
        Retina retina;
        retina.aScans = aScans;
        retina.rows = rows;
        EXPECT_EQ(
            failureOf("segmentCoarse", retina.makeSegmentation()),
            QString("Could not segment coarse layers.\nThe scan is too small to be segmented: "
                    "B-scan 1 has %1 A-scans and %2 rows, but 16 and 16 are needed.")
                .arg(aScans)
                .arg(rows)
                .toStdString());
    }
}

TEST_F(Failures, BScansOfDifferentSizesAreRefusedInWords)
{
    test::TestScan contents = test::lineScan(64, 160, 3);
    contents.images[1] = kelp::Image::create(kelp::MonoUInt8, {64, 120, 1});
    const OCTScanSegPtr segmentation(new OCTScanSegmentation(test::makeTestScan(contents)));
    EXPECT_EQ(
        failureOf("segmentCoarse", segmentation),
        "Could not segment coarse layers.\nThe B-scans differ in size: B-scan 2 has 64 A-scans "
        "and 120 rows, but B-scan 1 has 64 A-scans and 160 rows.");
}

} // namespace
} // namespace kelp::oct
