#include "LayerDistributionUtils.h"
#include "RegOCTStacks.h"
#include "SegWorker.h"
#include "SegmentationChains.h"
#include "TestRetina.h"
#include "TestRunRecorder.h"

#include <gmock/gmock.h>

#include <cmath>

namespace kelp::oct {
namespace {

using test::Retina;
using test::RunRecorder;
using test::singleBScanRetina;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// Steps called one after the other on the test's own thread.
struct Steps : testing::Test
{
    QSharedPointer<SegWatcher> watcher{new SegWatcher};
    SegWorker worker{watcher};
    RunRecorder recorder{*watcher};
    OCTScanSegPtr segmentation;

    void use(const Retina& retina) { segmentation = retina.makeSegmentation(); }
    void plan(int steps)
    {
        for (int i = 0; i < steps; ++i) {
            watcher->addStep();
        }
    }
    void coarseAndILM(bool maskETDRSSectors = false, bool maskCenter = false)
    {
        worker.segmentCoarse(segmentation);
        worker.segmentILMFine(segmentation, maskETDRSSectors, maskCenter);
    }
    VolumeLayerPtr layer(const LayerNamePtr& name) { return segmentation->getVolumeLayer(name); }
    void set(unsigned short row, const LayerNamePtr& name)
    {
        segmentation->setVolumeLayer(test::constantSurface(segmentation, row), name);
    }
    QStringList storedLayers()
    {
        QStringList identifiers;
        for (const LayerNamePtr& name : segmentation->getAllLayerNames()) {
            identifiers.append(name->getIdentifier());
        }
        identifiers.sort();
        return identifiers;
    }
    /// Mean absolute distance from a known surface, in rows.
    double error(const LayerNamePtr& name, const Retina& retina, std::size_t surface)
    {
        const VolumeLayerPtr found = layer(name);
        double sum = 0.0;
        for (unsigned z = 0; z < found->rows; ++z) {
            for (unsigned x = 0; x < found->columns; ++x) {
                sum += std::abs((*found)(z, x) -
                                retina.surface(surface, static_cast<int>(z), static_cast<int>(x)));
            }
        }
        return sum / static_cast<double>(found->size());
    }
    std::vector<std::string> lastStatuses(std::size_t count)
    {
        const std::vector<std::string> all = recorder.statuses();
        return {all.end() - static_cast<std::ptrdiff_t>(std::min(count, all.size())), all.end()};
    }
};

TEST_F(Steps, TheCoarseStepBringsBothSurfacesToFullSize)
{
    const Retina retina;
    use(retina);
    plan(2);
    worker.segmentCoarse(segmentation);
    EXPECT_THAT(recorder.failures(), IsEmpty());
    // In the order in which layers were stored.
    EXPECT_EQ(storedLayers(), (QStringList{LayerNameILMCoarse::create()->getIdentifier(),
                                           LayerNameISeCoarse::create()->getIdentifier()}));
    const VolumeLayerPtr ilm = layer(LayerNameILMCoarse::create());
    EXPECT_EQ(ilm->rows, 3U);
    EXPECT_EQ(ilm->columns, 64U);
    // A coarse row is 8 rows, and its number stands for its upper edge.
    EXPECT_LT(error(LayerNameILMCoarse::create(), retina, 0), 12.0);
    EXPECT_LT(error(LayerNameISeCoarse::create(), retina, 4), 12.0);
    EXPECT_THAT(recorder.statuses(), Contains("Start coarse segmentation"));
    EXPECT_THAT(recorder.statuses(), Contains("Starting coarse layer segmentation."));
    EXPECT_THAT(lastStatuses(4), ElementsAre("Setting layers", "Coarse segmentation finished.",
                                             "Finished coarse segmentation",
                                             "Segmentation step 1 of 2 has finished \n\n"));
    EXPECT_EQ(recorder.progress().back(), 50);
}

TEST_F(Steps, TheCoarseStepWithDistancesInFullRowsEqualsTheDefault)
{
    use(Retina());
    plan(3);
    worker.segmentCoarse(segmentation);
    const QString plain = segmentation->toBase64String();
    worker.segmentCoarseMinMax(segmentation, 16.0F, 80.0F);
    EXPECT_EQ(segmentation->toBase64String(), plain);
    EXPECT_THAT(recorder.failures(), IsEmpty());
    // 15.0 truncates to a smallest distance of one coarse row, which changes nothing here either,
    // but a largest distance of 3 does.
    worker.segmentCoarseMinMax(segmentation, 15.0F, 24.0F);
    EXPECT_NE(segmentation->toBase64String(), plain);
}

TEST_F(Steps, ASmallestDistanceOfFifteenRowsIsOneCoarseRow)
{
    // ILM and ISe one coarse row apart, so that a minimum of two moves a surface.
    Retina thin;
    thin.surfaces = {48, 50, 51, 52, 56, 64};
    use(thin);
    plan(3);
    const auto coarse = [&](float minDist) {
        worker.segmentCoarseMinMax(segmentation, minDist, 80.0F);
        return segmentation->toBase64String();
    };
    const QString one = coarse(15.0F);
    EXPECT_EQ(coarse(8.0F), one);
    EXPECT_NE(coarse(16.0F), one);
}

TEST_F(Steps, ASingleBScanIsTakenWithADistanceOfOne)
{
    for (const char* pattern : {"Single BScan", "Circular BScan", "Volume"}) {
        const OCTScanPtr scan = singleBScanRetina(pattern).makeScan();
        VolumeLayerPtr ilm = VolumeLayerPtr::create(0U, 0U);
        VolumeLayerPtr ise = VolumeLayerPtr::create(0U, 0U);
        double ilmVoxel[3];
        double iseVoxel[3];
        worker.segmentILMCoarsePrivate(ilm, ilmVoxel, ise, iseVoxel, scan,
                                       MaskMatrixPtr::create(1U, 64U), 2, 10);
        EXPECT_EQ(ilm->rows, 1U);
        EXPECT_EQ(ilm->columns, 4U);
        EXPECT_EQ(ilmVoxel[2], 1.0);
        EXPECT_EQ(iseVoxel[2], 1.0);
        // The coarse image's spacing: 16 and 8 times the scan's.
        EXPECT_NEAR(ilmVoxel[0], 16 * 0.05, 1e-9);
        EXPECT_NEAR(ilmVoxel[1], 8 * 0.003872, 1e-9);
    }
}

TEST_F(Steps, TheCoarseVoxelOfAVolumeHoldsTheDistanceOfItsBScans)
{
    const OCTScanPtr scan = Retina().makeScan();
    VolumeLayerPtr ilm = VolumeLayerPtr::create(0U, 0U);
    VolumeLayerPtr ise = VolumeLayerPtr::create(0U, 0U);
    double ilmVoxel[3];
    double iseVoxel[3];
    worker.segmentILMCoarsePrivate(ilm, ilmVoxel, ise, iseVoxel, scan,
                                   MaskMatrixPtr::create(3U, 64U), 2, 10);
    EXPECT_NEAR(ilmVoxel[2], 0.12, 1e-12);
}

TEST_F(Steps, TheFineILMIsExactOnAClearEdgeAndStoresTheFovea)
{
    const Retina retina;
    use(retina);
    plan(3);
    coarseAndILM();
    EXPECT_THAT(recorder.failures(), IsEmpty());
    EXPECT_LT(error(LayerNameILM::create(), retina, 0), 1.5);
    const FoveaPosition fovea = segmentation->getFoveaPosition();
    EXPECT_TRUE(fovea.isSet);
    EXPECT_EQ(fovea.position,
              RegOCTStacks::findFovea(segmentation->getOCT(), layer(LayerNameILM::create())));
    EXPECT_TRUE(segmentation->getMask()->getPolygons().isEmpty());
    EXPECT_THAT(lastStatuses(2), ElementsAre("Finished ILM segmentation",
                                             "Segmentation step 2 of 3 has finished \n\n"));
}

TEST_F(Steps, ASingleBScanGetsAFoveaToo)
{
    use(singleBScanRetina("Single BScan"));
    plan(2);
    coarseAndILM();
    EXPECT_THAT(recorder.failures(), IsEmpty());
    EXPECT_TRUE(segmentation->getFoveaPosition().isSet);
}

TEST_F(Steps, ACircularBScanKeepsItsFoveaPositionAndItsMask)
{
    use(singleBScanRetina("Circular BScan"));
    const FoveaPosition before{CoordOnLocalizer(1.25, 2.5), false};
    segmentation->setFoveaPosition(before);
    plan(2);
    coarseAndILM(true, true);
    EXPECT_THAT(recorder.failures(), IsEmpty());
    EXPECT_EQ(recorder.count("success"), 1);
    EXPECT_EQ(segmentation->getFoveaPosition().position, before.position);
    EXPECT_FALSE(segmentation->getFoveaPosition().isSet);
    EXPECT_TRUE(segmentation->getMask()->getPolygons().isEmpty());
}

QPolygonF drawnByTheUser()
{
    return QPolygonF({{-1.0, -1.0}, {-0.5, -1.0}, {-0.5, -0.5}});
}

TEST_F(Steps, WithoutMaskOptionsTheUsersMaskStays)
{
    use(Retina());
    segmentation->getMask()->addPolygon(drawnByTheUser());
    plan(2);
    coarseAndILM();
    EXPECT_EQ(segmentation->getMask()->getPolygons(), QList<QPolygonF>{drawnByTheUser()});
}

TEST_F(Steps, TheCenterMaskTakesTheScansCenterForTheFovea)
{
    use(Retina());
    segmentation->getMask()->addPolygon(drawnByTheUser());
    plan(2);
    coarseAndILM(false, true);
    EXPECT_THAT(recorder.failures(), IsEmpty());
    const Vector2d center = segmentation->getOCT()->getCenter();
    EXPECT_EQ(segmentation->getFoveaPosition().position, CoordOnLocalizer(center));
    EXPECT_TRUE(segmentation->getFoveaPosition().isSet);

    SegmentationMask expected(segmentation->getOCT());
    const SegmentationMaskPtr mask(&expected, [](SegmentationMask*) {});
    RegOCTStacks::maskCenter(mask, CoordOnLocalizer(center));
    EXPECT_EQ(segmentation->getMask()->getPolygons(), expected.getPolygons());
}

TEST_F(Steps, BothMasksAreMadeAroundTheScansCenterWithTheEtdrsMaskFirst)
{
    use(Retina());
    segmentation->getMask()->addPolygon(drawnByTheUser());
    plan(2);
    coarseAndILM(true, true);
    SegmentationMask expected(segmentation->getOCT());
    const SegmentationMaskPtr mask(&expected, [](SegmentationMask*) {});
    const CoordOnLocalizer center(segmentation->getOCT()->getCenter());
    RegOCTStacks::maskETDRSSectors(mask, center);
    RegOCTStacks::maskCenter(mask, center);
    EXPECT_EQ(segmentation->getMask()->getPolygons(), expected.getPolygons());
}

TEST_F(Steps, TheEtdrsMaskAloneIsMadeAroundTheFoveaFound)
{
    use(Retina());
    plan(2);
    coarseAndILM(true, false);
    const FoveaPosition fovea = segmentation->getFoveaPosition();
    EXPECT_EQ(fovea.position,
              RegOCTStacks::findFovea(segmentation->getOCT(), layer(LayerNameILM::create())));
    EXPECT_EQ(segmentation->getMask()->getPolygons().size(), 1);
}

TEST_F(Steps, TheNormalChainFindsAllSurfacesOfAVolumeAndOfASingleBScan)
{
    for (const Retina& retina : {Retina(), singleBScanRetina("Single BScan")}) {
        watcher->reset();
        recorder.clear();
        use(retina);
        plan(4);
        coarseAndILM();
        worker.segmentRPEHumanHealthy(segmentation);
        worker.segmentInnerHumanHealthy(segmentation);
        EXPECT_THAT(recorder.failures(), IsEmpty());
        EXPECT_EQ(recorder.count("success"), 1);
        EXPECT_THAT(recorder.statuses(), Contains("Loading layer distribution from disk."));
        EXPECT_THAT(recorder.statuses(), Contains("Computing search range boundaries."));
        EXPECT_THAT(recorder.statuses(), Contains("Regularizing graph."));
        EXPECT_THAT(recorder.statuses(), Contains("Finished RPE segmentation"));
        EXPECT_THAT(recorder.statuses(), Contains("Finished inner layers segmentation"));
        EXPECT_EQ(recorder.progress().back(), 100);
        EXPECT_LT(error(LayerNameILM::create(), retina, 0), 2.0);
        EXPECT_LT(error(LayerNameISe::create(), retina, 4), 3.0);
        EXPECT_EQ(storedLayers().size(), 8);
    }
}

TEST_F(Steps, ACircularBScanNeverLoadsTheModelAndSucceedsThreeTimes)
{
    use(singleBScanRetina("Circular BScan"));
    plan(4);
    coarseAndILM();
    recorder.clear();
    worker.segmentRPEHumanHealthy(segmentation);
    EXPECT_EQ(recorder.events().front(), "status: Segmentation step 3 of 4 has started");
    EXPECT_THAT(recorder.statuses(), Contains("Segmentation step 4 of 4 has started"));
    EXPECT_EQ(recorder.count("success"), 2);
    EXPECT_EQ(recorder.count("started"), 0);
    EXPECT_EQ(recorder.events().back(), "success");
    const std::size_t progressBefore = recorder.progress().size();
    worker.segmentInnerHumanHealthy(segmentation);
    EXPECT_EQ(recorder.count("success"), 3);
    EXPECT_EQ(recorder.count("started"), 1);
    EXPECT_EQ(recorder.progress().size(), progressBefore) << "no step is planned any more";
    EXPECT_THAT(recorder.failures(), IsEmpty());
    EXPECT_THAT(recorder.statuses(), Not(Contains("Loading layer distribution from disk.")));
    EXPECT_EQ(storedLayers().size(), 8);

    // The inner step of the nested slot is told apart in the statistics.
    QStringList names;
    for (const StepStatistics& step : watcher->getStatistics()) {
        names.append(step.name);
    }
    EXPECT_EQ(names, (QStringList{"segmentCoarse", "segmentILMFine", "segmentRPEHumanHealthy",
                                  "segmentPEFineConstant", "segmentInnerHumanHealthy"}));
}

TEST_F(Steps, TheDrusenChainFindsTheInnerBorderOfTheRPE)
{
    for (const QString pattern : {"Volume", "Single BScan", "Circular BScan"}) {
        watcher->reset();
        recorder.clear();
        Retina retina = pattern == "Volume" ? Retina() : singleBScanRetina(pattern);
        retina.surfaces = {40, 50, 70, 88, 104, 127};
        retina.darkUnderISe = {6, 11};
        use(retina);
        plan(5);
        coarseAndILM();
        worker.segmentBMFine(segmentation);
        worker.segmentISeIRPEFineDrusen(segmentation);
        EXPECT_THAT(recorder.failures(), IsEmpty()) << pattern.toStdString();
        EXPECT_LT(error(LayerNameBM::create(), retina, 5), 3.0) << pattern.toStdString();
        const VolumeLayerPtr ise = layer(LayerNameISe::create());
        const VolumeLayerPtr irpe = layer(LayerNameIRPE::create());
        for (std::size_t i = 0; i < ise->size(); ++i) {
            EXPECT_GE(irpe->data[i] - ise->data[i], 6);
            EXPECT_LE(irpe->data[i] - ise->data[i], 16);
        }
        worker.segmentInnerHumanHealthy(segmentation);
        EXPECT_EQ(recorder.count("success"), 1);
        EXPECT_EQ(storedLayers().size(), 9);
    }
}

TEST_F(Steps, TheMouseChainFindsAllSurfacesOfEveryPattern)
{
    for (const QString pattern : {"Volume", "Single BScan", "Circular BScan"}) {
        watcher->reset();
        recorder.clear();
        Retina mouse = pattern == "Volume" ? Retina() : singleBScanRetina(pattern);
        mouse.surfaces = {40, 45, 58, 68, 90, 108};
        use(mouse);
        plan(4);
        coarseAndILM();
        const OuterDistProps outer = mouseOuterDistances();
        worker.segmentPEFineConstant(segmentation, outer.rpeThicknessMean,
                                     outer.rpeThicknessVarWeight, outer.ilm2isosDistMean,
                                     outer.ilm2isosDistVarWeight);
        worker.segmentInnerFineConstant(segmentation, mouseInnerDistances());
        EXPECT_THAT(recorder.failures(), IsEmpty()) << pattern.toStdString();
        EXPECT_EQ(recorder.count("success"), 1);
        EXPECT_EQ(storedLayers().size(), 8);
        EXPECT_LT(error(LayerNameILM::create(), mouse, 0), 2.0);
        const VolumeLayerPtr gcl = layer(LayerNameGCL::create());
        const VolumeLayerPtr inl = layer(LayerNameINL::create());
        const VolumeLayerPtr onl = layer(LayerNameONL::create());
        // 7.8 and 156 micrometres at 3.872 a row.
        for (std::size_t i = 0; i < gcl->size(); ++i) {
            EXPECT_GE(inl->data[i] - gcl->data[i], 2);
            EXPECT_LE(inl->data[i] - gcl->data[i], 40);
            EXPECT_GE(onl->data[i] - inl->data[i], 2);
            EXPECT_LE(onl->data[i] - inl->data[i], 40);
        }
    }
}

/// The events of one step that is not the run's last, from its closing line on.
struct Closing : Steps
{
    std::vector<std::string> order;

    void listen()
    {
        QObject::connect(watcher.data(), &SegWatcher::statusChanged, watcher.data(),
                         [this](const QString& text) { order.push_back(text.toStdString()); });
        QObject::connect(watcher.data(), &SegWatcher::segmentationProgress, watcher.data(),
                         [this](int value) { order.push_back(std::to_string(value)); });
        use(Retina());
        set(40, LayerNameILMCoarse::create());
        set(112, LayerNameISeCoarse::create());
        set(40, LayerNameILM::create());
        set(112, LayerNameISe::create());
        set(127, LayerNameBM::create());
        plan(2);
    }
    std::vector<std::string> lastThree() const { return {order.end() - 3, order.end()}; }
};

const std::string finished = "Segmentation step 1 of 2 has finished \n\n";

TEST_F(Closing, MostStepsTellTheirLineThenTheirProgressThenTheirEnd)
{
    listen();
    worker.segmentILMFine(segmentation, false, false);
    EXPECT_THAT(lastThree(), ElementsAre("Finished ILM segmentation", "50", finished));
}

TEST_F(Closing, TheBMStepTellsItsProgressFirst)
{
    listen();
    worker.segmentBMFine(segmentation);
    EXPECT_THAT(lastThree(), ElementsAre("50", "Finished BM segmentation", finished));
}

TEST_F(Closing, TheDrusenStepEndsBeforeItTellsItsProgress)
{
    listen();
    worker.segmentISeIRPEFineDrusen(segmentation);
    EXPECT_THAT(lastThree(), ElementsAre("Finished ISe and  segmentation", finished, "50"));
}

TEST_F(Closing, TheConstantRPEStepEndsBeforeItTellsItsProgress)
{
    listen();
    worker.segmentPEFineConstant(segmentation, 67.0F, 0.5F, 292.0F, 0.1F);
    EXPECT_THAT(lastThree(), ElementsAre("Finished RPE segmentation", finished, "50"));
}

TEST_F(Closing, AsTheLastStepItsProgressIsSilent)
{
    listen();
    watcher->reset();
    plan(1);
    worker.segmentISeIRPEFineDrusen(segmentation);
    EXPECT_EQ(recorder.count("success"), 1);
    EXPECT_NE(recorder.progress().back(), 100);
}

TEST_F(Steps, WithoutNarrowingTheInnerSurfacesAreSoughtOverTheWholeSpan)
{
    const Retina retina;
    use(retina);
    set(40, LayerNameILM::create());
    set(112, LayerNameISe::create());
    const OCTScanPtr scan = segmentation->getOCT();
    QList<LayerDistributionPtr> distributions;
    LayerDistributionUtils::loadFromXML(distributions);
    InnerSegParams params = healthyInnerParams(segmentation->getMask()->getMaskMatrix());
    const auto solve = [&] {
        const auto gcl = VolumeLayerPtr::create(3U, 64U);
        const auto inl = VolumeLayerPtr::create(3U, 64U);
        const auto onl = VolumeLayerPtr::create(3U, 64U);
        watcher->beginStepStatistics("test");
        worker.segmentInnerFineConstrainedPrivate(layer(LayerNameILM::create()),
                                                  layer(LayerNameISe::create()), gcl, inl, onl,
                                                  scan, distributions, params);
        watcher->endStepStatistics();
        return watcher->getStatistics().back().cuts.back().nodes;
    };
    const std::size_t narrowed = solve();
    params.searchRangeOn = false;
    // Three surfaces, a node for each of the 72 rows from ILM to ISe in each of the columns.
    EXPECT_EQ(solve(), 3U * 72U * 3U * 64U);
    EXPECT_LT(narrowed, 3U * 72U * 3U * 64U);
}

TEST_F(Steps, MaskedColumnsTakeNoPartInTheCuts)
{
    use(Retina());
    segmentation->getMask()->addPolygon(
        QPolygonF({{-1.0, -0.05}, {10.0, -0.05}, {10.0, 0.05}, {-1.0, 0.05}})); // B-scan 0
    plan(2);
    worker.segmentCoarse(segmentation);
    worker.segmentILMFine(segmentation, false, false);
    EXPECT_THAT(recorder.failures(), IsEmpty());
    EXPECT_EQ(watcher->getStatistics().back().cuts.back().columns, 2U * 64U);
    const SurfaceQuality quality = watcher->getStatistics().back().surfaces.back();
    EXPECT_EQ(quality.bScans[0], QualityCounts());
    EXPECT_EQ(quality.all().aScans, 2 * 64);
}

TEST_F(Steps, EachStepTellsHowItsSurfacesCameOut)
{
    Retina retina;
    retina.surfaces = {40, 50, 70, 88, 104, 127};
    retina.darkUnderISe = {6, 11};
    use(retina);
    plan(4);
    coarseAndILM();
    worker.segmentBMFine(segmentation);
    worker.segmentISeIRPEFineDrusen(segmentation);
    EXPECT_THAT(recorder.failures(), IsEmpty());
    std::vector<std::string> told;
    for (const StepStatistics& step : watcher->getStatistics()) {
        for (const SurfaceQuality& quality : step.surfaces) {
            EXPECT_EQ(quality.bScans.size(), 3U);
            told.push_back((step.name + ' ' + quality.surface).toStdString() + ' ' +
                           std::to_string(quality.all().aScans));
            EXPECT_EQ(quality.all().withoutRow, 0);
        }
    }
    EXPECT_THAT(told, ElementsAre("segmentCoarse ILMcoarse 12", "segmentCoarse ISeCoarse 12",
                                  "segmentILMFine ILM 192", "segmentBMFine BM 192",
                                  "segmentISeIRPEFineDrusen ISe 192",
                                  "segmentISeIRPEFineDrusen IRPE 192"));
}

TEST_F(Steps, SurfacesThatFindNoPlaceAreToldOf)
{
    use(Retina());
    // Twenty rows are too few for GCL, INL and ONL with the distances wanted here.
    set(40, LayerNameILM::create());
    set(60, LayerNameISe::create());
    InnerDistProps props{};
    props.gcl2inlDistMin = 100.0F;
    props.gcl2inlDistMax = 200.0F;
    props.inl2onlDistMin = 100.0F;
    props.inl2onlDistMax = 200.0F;
    plan(1);
    worker.segmentInnerFineConstant(segmentation, props);
    EXPECT_THAT(recorder.failures(), IsEmpty());
    int withoutRow = 0;
    const std::vector<StepStatistics> statistics = watcher->getStatistics();
    for (const SurfaceQuality& quality : statistics.back().surfaces) {
        EXPECT_EQ(quality.all().withoutRoom, 3 * 64) << quality.surface.toStdString();
        withoutRow += quality.all().withoutRow;
    }
    EXPECT_GE(withoutRow, 2 * 3 * 64);
    EXPECT_EQ(storedLayers().size(), 5) << "the layers are stored all the same";
}

TEST_F(Steps, AnAbortBeforeStoringStoresNothing)
{
    use(Retina());
    plan(2);
    worker.segmentCoarse(segmentation);
    const QString before = segmentation->toBase64String();
    QObject::connect(watcher.data(), &SegWatcher::statusChanged, watcher.data(),
                     [this](const QString& text) {
                         if (text == "Setting layers") {
                             watcher->abort();
                         }
                     });
    worker.segmentILMFine(segmentation, false, false);
    EXPECT_THAT(recorder.failures(), ElementsAre("Segmentation was aborted."));
    EXPECT_EQ(recorder.count("success"), 0);
    EXPECT_EQ(segmentation->toBase64String(), before);
    EXPECT_THAT(lastStatuses(1), ElementsAre("Aborting segmentation"));
}

} // namespace
} // namespace kelp::oct
