#include "SegWorker.h"
#include "TestRetina.h"
#include "kelpException.h"

#include <gmock/gmock.h>

namespace kelp::oct {
namespace {

using test::Retina;

/// The checks of the functions behind the slots, which the slots themselves keep from failing.
struct PrivateChecks : testing::Test
{
    QSharedPointer<SegWatcher> watcher{new SegWatcher};
    SegWorker worker{watcher};
    OCTScanPtr scan = Retina().makeScan();
    VolumeLayerPtr layer = VolumeLayerPtr::create(3U, 64U);
    VolumeLayerPtr none;
    MaskMatrixPtr mask = MaskMatrixPtr::create(3U, 64U);

    template <typename Function>
    void expectAssertion(Function&& function, const std::string& text)
    {
        try {
            function();
            ADD_FAILURE() << "nothing raised instead of " << text;
        } catch (const Assertion& assertion) {
            EXPECT_THAT(assertion.what(), testing::EndsWith(": " + text));
        }
    }
};

TEST_F(PrivateChecks, Coarse)
{
    const auto call = [&](const OCTScanPtr& s, const MaskMatrixPtr& m, const VolumeLayerPtr& a,
                          const VolumeLayerPtr& b) {
        return [=, this] { worker.segmentILMCoarse(s, m, a, b, 2, 10); };
    };
    expectAssertion(call({}, {}, {}, {}), "OCT scan is NULL.");
    expectAssertion(call(scan, {}, {}, {}), "Mask is NULL.");
    expectAssertion(call(scan, mask, {}, {}), "target ILM coarse layer is NULL.");
    expectAssertion(call(scan, mask, layer, {}), "target ISe coarse layer is NULL.");
}

TEST_F(PrivateChecks, CoarseCut)
{
    const auto call = [&](VolumeLayerPtr a, VolumeLayerPtr b, const OCTScanPtr& s,
                          const MaskMatrixPtr& m) {
        return [=, this]() mutable {
            double voxel[3];
            worker.segmentILMCoarsePrivate(a, voxel, b, voxel, s, m, 2, 10);
        };
    };
    expectAssertion(call({}, {}, {}, {}), "NULL target ILM coarselayer");
    expectAssertion(call(layer, {}, {}, {}), "NULL target ISe coarse layer");
    expectAssertion(call(layer, layer, {}, {}), "NULL mask");
    expectAssertion(call(layer, layer, {}, mask), "NULL oct");
    expectAssertion(call(layer, layer, scan, MaskMatrixPtr::create(2U, 64U)),
                    "Coarse mask matrix dimension does not match the coarse oct dimensions.");
}

TEST_F(PrivateChecks, FineILM)
{
    const auto call = [&](const VolumeLayerPtr& a, const VolumeLayerPtr& b, const OCTScanPtr& s) {
        return [=, this] { worker.segmentILMFineRegularizedPrivate(a, b, s, ilmParams(mask)); };
    };
    expectAssertion(call({}, {}, {}), "target ILM layer is null.");
    expectAssertion(call(layer, {}, {}), "ILM coarse layer is null.");
    expectAssertion(call(layer, layer, {}), "OCT scan is null.");
    expectAssertion(call(layer, VolumeLayerPtr::create(2U, 64U), scan),
                    "ILM coarse layer row size mismatch.");
    expectAssertion(call(layer, VolumeLayerPtr::create(3U, 63U), scan),
                    "ILM coarse layer column size mismatch.");
}

TEST_F(PrivateChecks, HealthyRPE)
{
    const auto call = [&](const VolumeLayerPtr& a, const VolumeLayerPtr& b, const VolumeLayerPtr& c,
                          const VolumeLayerPtr& d, const OCTScanPtr& s) {
        return [=, this] {
            worker.segmentPEFineConstrainedPrivate(a, b, c, d, s, {}, healthyOuterParams(mask));
        };
    };
    expectAssertion(call({}, {}, {}, {}, {}), "PE coarse layer is null.");
    expectAssertion(call(layer, {}, {}, {}, {}), "ILM layer is null.");
    expectAssertion(call(layer, layer, {}, {}, {}), "Target ISe layer is null.");
    expectAssertion(call(layer, layer, layer, {}, {}), "Target BM layer is null.");
    expectAssertion(call(layer, layer, layer, layer, {}), "OCT scan is null.");
    const OCTScanPtr circle = test::singleBScanRetina("Circular BScan").makeScan();
    expectAssertion(call(layer, layer, layer, layer, circle),
                    "Trying to segment Circular BScan OCT scan pattern, but only volumes and "
                    "single bScans can be segmented");
}

TEST_F(PrivateChecks, HealthyInner)
{
    const auto call = [&](const VolumeLayerPtr& a, const VolumeLayerPtr& b, const VolumeLayerPtr& c,
                          const VolumeLayerPtr& d, const VolumeLayerPtr& e, const OCTScanPtr& s) {
        return [=, this] {
            worker.segmentInnerFineConstrainedPrivate(a, b, c, d, e, s, {},
                                                      healthyInnerParams(mask));
        };
    };
    expectAssertion(call({}, {}, {}, {}, {}, {}), "ILM layer is null.");
    expectAssertion(call(layer, {}, {}, {}, {}, {}), "ISe layer is null.");
    expectAssertion(call(layer, layer, {}, {}, {}, {}), "target GCL layer is null.");
    expectAssertion(call(layer, layer, layer, {}, {}, {}), "target INL layer is null.");
    expectAssertion(call(layer, layer, layer, layer, {}, {}), "target ONL layer is null.");
    expectAssertion(call(layer, layer, layer, layer, layer, {}), "OCT scan is null.");
}

TEST_F(PrivateChecks, BM)
{
    const auto call = [&](const VolumeLayerPtr& a, const VolumeLayerPtr& b, const VolumeLayerPtr& c,
                          const OCTScanPtr& s) {
        return [=, this] { worker.segmentBMFinePrivate(a, b, c, s, bmParams(mask)); };
    };
    expectAssertion(call({}, {}, {}, {}), "RPE coarse layer is null.");
    expectAssertion(call(layer, {}, {}, {}), "ILM layer is null.");
    expectAssertion(call(layer, layer, {}, {}), "target BM layer is null.");
    expectAssertion(call(layer, layer, layer, {}), "OCT scan is null.");
    expectAssertion(call(layer, VolumeLayerPtr::create(2U, 64U), layer, scan),
                    "ILM layer row size mismatch.");
    expectAssertion(call(layer, VolumeLayerPtr::create(3U, 63U), layer, scan),
                    "ILM layer column size mismatch.");
}

TEST_F(PrivateChecks, Drusen)
{
    const auto call = [&](const VolumeLayerPtr& a, const VolumeLayerPtr& b, const VolumeLayerPtr& c,
                          const OCTScanPtr& s) {
        return
            [=, this] { worker.segmentISeIRPEFinePrivate(a, layer, b, c, s, drusenParams(mask)); };
    };
    expectAssertion(call({}, {}, {}, {}), "ILM layer is null.");
    expectAssertion(call(layer, {}, {}, {}), "target ISe layer is null.");
    expectAssertion(call(layer, layer, {}, {}), "target IRPE layer is null.");
    expectAssertion(call(layer, layer, layer, {}), "OCT scan is null.");
}

TEST_F(PrivateChecks, ConstantRPE)
{
    const auto call = [&](const VolumeLayerPtr& a, const VolumeLayerPtr& b, const VolumeLayerPtr& c,
                          const VolumeLayerPtr& d, const OCTScanPtr& s) {
        return [=, this] {
            worker.segmentPEFineConstantPrivate(a, b, c, d, s, constantOuterParams(mask, 0.5F),
                                                67.0F, 292.0F, 0.1F);
        };
    };
    expectAssertion(call({}, {}, {}, {}, {}), "OCT scan is null.");
    expectAssertion(call({}, {}, {}, {}, scan), "PE coarse layer is null.");
    expectAssertion(call(layer, {}, {}, {}, scan), "ILM layer is null.");
    expectAssertion(call(layer, layer, {}, {}, scan), "Target ISe layer is null.");
    expectAssertion(call(layer, layer, layer, {}, scan), "Target BM layer is null.");
}

TEST_F(PrivateChecks, ConstantInner)
{
    const auto call = [&](const VolumeLayerPtr& a, const VolumeLayerPtr& b, const VolumeLayerPtr& c,
                          const VolumeLayerPtr& d, const VolumeLayerPtr& e) {
        return [=, this] {
            worker.segmentInnerFineConstantPrivate(a, b, c, d, e, {}, healthyInnerParams(mask), 66,
                                                   70, 64, 93, 25, 95, 30, 85);
        };
    };
    expectAssertion(call({}, {}, {}, {}, {}), "ILM layer is null.");
    expectAssertion(call(layer, {}, {}, {}, {}), "ISe layer is null.");
    expectAssertion(call(layer, layer, {}, {}, {}), "Target GCL layer is null.");
    expectAssertion(call(layer, layer, layer, {}, {}), "Target INL layer is null.");
    expectAssertion(call(layer, layer, layer, layer, {}), "Target ONL layer is null.");
    expectAssertion(call(layer, layer, layer, layer, layer), "OCT scan is null.");
}

} // namespace
} // namespace kelp::oct
