#include "BatchModuleFixture.h"
#include "SegmentationMask.h"
#include "TraceCapture.h"

#include <QProgressBar>

namespace kelp::oct {

namespace {

using phantom::Kind;
using phantom::Pattern;
using test::ProgressCanceller;

const QStringList normalLayers{"BM", "GCL", "ILM", "INL", "ISe", "ONL"};
const QStringList drusenLayers{"BM", "GCL", "ILM", "INL", "IRPE", "ISe", "ONL"};

/// So few that the deep surfaces are below the image.
constexpr int fewRows = 64;

class BatchSegmentation : public test::BatchModuleFixture
{
protected:
    /// The patient whose scan stands in this row.
    Patient& patientOf(int row) const
    {
        for (Patient* const patient : patients()) {
            if (patient->getName() == cell(row, 1)) {
                return *patient;
            }
        }
        ADD_FAILURE() << "no patient of row " << row;
        return *patients().first();
    }
    int countSuccess(const Patient& patient) const
    {
        return countInLog("Segmentation success for patient " + patient.getName());
    }
    void expectLayers(const Patient& patient, const QStringList& layers) const
    {
        const QList<Data*> segmentations = segmentationsOf(patient);
        ASSERT_EQ(segmentations.size(), 1);
        EXPECT_EQ(finalLayersOf(segmentations.first()), layers);
    }
};

TEST_F(BatchSegmentation, SegmentsTheCheckedScansAndStoresThem)
{
    writePhantom("a", 1);
    writePhantom("b", 2);
    writePhantom("c", 3);
    importFolder(m_exports.path());
    ASSERT_EQ(table().rowCount(), 3);
    check(0);
    check(2);
    const QString unchecked = cell(1, 1);
    segmentChecked();
    EXPECT_EQ(countInLog("Segmentation success for patient"), 2);
    EXPECT_EQ(colorInLog("Finished batch-segmenting OCT scans"), QColor(Qt::darkGreen));
    EXPECT_EQ(countInLog("Finished batch-segmenting OCT scans"), 1);
    EXPECT_TRUE(log().toPlainText().startsWith(".")) << "the progress is a row of dots";
    // A batch that is done starts the next one with nothing checked.
    EXPECT_FALSE(box(0)->isChecked());
    reopenStore();
    for (Patient* const patient : patients()) {
        if (patient->getName() == unchecked) {
            EXPECT_TRUE(segmentationsOf(*patient).isEmpty());
        } else {
            expectLayers(*patient, normalLayers);
            EXPECT_TRUE(segmentationsOf(*patient).first()->getId().startsWith("Segment_"));
        }
    }
}

TEST_F(BatchSegmentation, OnTheSameScanAgainAddsAnotherSegmentation)
{
    writePhantom("a", 1);
    importFolder(m_exports.path());
    check(0);
    segmentChecked();
    check(0);
    segmentChecked();
    const QList<Data*> segmentations = segmentationsOf(patientOf(0));
    ASSERT_EQ(segmentations.size(), 2);
    EXPECT_NE(segmentations.at(0)->getId(), segmentations.at(1)->getId());
    EXPECT_EQ(finalLayersOf(segmentations.at(1)), normalLayers);
}

TEST_F(BatchSegmentation, WithNoRowCheckedIsFinishedAtOnce)
{
    writePhantom("a", 1);
    importFolder(m_exports.path());
    click("Start Segmentation");
    EXPECT_FALSE(progress());
    EXPECT_EQ(logTexts(), QStringList{"Finished batch-segmenting OCT scans"});
}

TEST_F(BatchSegmentation, ACircularScanIsWholeAndCountsOnceAlthoughItReportsSuccessThreeTimes)
{
    writePhantom("a", 1, Pattern::Circle);
    writePhantom("b", 2);
    writePhantom("c", 3, Pattern::Circle);
    importFolder(m_exports.path());
    ASSERT_EQ(table().rowCount(), 3);
    for (int row = 0; row < 3; ++row) {
        check(row);
    }
    const test::TraceCapture trace;
    segmentChecked();
    // The last scan's further successes must not finish the batch again.
    QTest::qWait(0);
    EXPECT_GT(trace.lines()
                  .filter("..\\src\\OCTBatchProcessModule::kelp::oct::OCTBatchProcessModule::"
                          "segmentationSuccess")
                  .size(),
              3);
    EXPECT_EQ(countInLog("Finished batch-segmenting OCT scans"), 1);
    EXPECT_EQ(countInLog("Segmentation error"), 0);
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(countSuccess(patientOf(row)), 1);
    }
    reopenStore();
    ASSERT_EQ(patients().size(), 3);
    for (Patient* const patient : patients()) {
        expectLayers(*patient, normalLayers);
    }
}

TEST_F(BatchSegmentation, RunsTheDrusenChainOnDrusen)
{
    writePhantom("a", 1, Pattern::Volume, Kind::Drusen);
    importFolder(m_exports.path());
    clickOption("Drusen");
    check(0);
    segmentChecked();
    expectLayers(patientOf(0), drusenLayers);
}

TEST_F(BatchSegmentation, RunsTheTrainedModelOnHealthyEyes)
{
    writePhantom("a", 1);
    importFolder(m_exports.path());
    check(0);
    const test::TraceCapture trace;
    segmentChecked();
    EXPECT_TRUE(trace.lines().contains("segmentPEFineConstrained... "));
}

TEST_F(BatchSegmentation, RunsTheMouseChainOnMice)
{
    writePhantom("a", 1, Pattern::Volume, Kind::Mouse);
    importFolder(m_exports.path());
    clickOption("Mouse");
    check(0);
    const test::TraceCapture trace;
    segmentChecked();
    expectLayers(patientOf(0), normalLayers);
    // No step of it knows the trained model.
    EXPECT_FALSE(trace.lines().contains("segmentPEFineConstrained... "));
}

TEST_F(BatchSegmentation, MakesTheMasksThatAreChecked)
{
    const auto polygonsAfterRun = [this] {
        check(0);
        segmentChecked();
        auto* const segmentation =
            qobject_cast<OCTScanSegmentation*>(segmentationsOf(patientOf(0)).last());
        return segmentation->getMask()->getPolygons().size();
    };
    writePhantom("a", 1);
    importFolder(m_exports.path());
    EXPECT_EQ(polygonsAfterRun(), 1);
    clickOption("Use Center Mask (ONH)");
    EXPECT_EQ(polygonsAfterRun(), 2);
    clickOption("Use ETDRS Mask");
    clickOption("Use Center Mask (ONH)");
    EXPECT_EQ(polygonsAfterRun(), 0);
}

TEST_F(BatchSegmentation, CancellingStopsAtTheScanAndTheNextBatchBeginsWithWhatWasLeft)
{
    writePhantom("a", 1);
    writePhantom("b", 2);
    importFolder(m_exports.path());
    check(0);
    check(1);
    const QString first = cell(0, 1);
    const QString second = cell(1, 1);
    {
        const test::TraceCapture trace;
        const ProgressCanceller canceller(window(), [this](QProgressDialog& dialog) {
            return dialog.labelText() == "Batch segementing OCTs..." &&
                   log().toPlainText().contains('.');
        });
        segmentChecked();
        EXPECT_TRUE(canceller.hasCancelled());
        EXPECT_TRUE(trace.lines().contains("batch seg cancelled, done"));
    }
    EXPECT_EQ(countInLog("Segmentation error for patient " + first +
                         ". Reason: Segmentation was aborted."),
              1);
    EXPECT_EQ(countInLog("Finished"), 0);
    EXPECT_FALSE(box(1)->isChecked());

    segmentChecked(); // nothing is checked: only what waits still
    EXPECT_EQ(countInLog("Segmentation success for patient " + second), 1);
    EXPECT_EQ(countInLog("Segmentation success for patient"), 1);
    EXPECT_EQ(countInLog("Finished batch-segmenting OCT scans"), 1);
    segmentChecked();
    EXPECT_EQ(logTexts(), QStringList{"Finished batch-segmenting OCT scans"});
}

TEST_F(BatchSegmentation, ACancelWhileTheProgressAdvancesStartsNoFurtherScan)
{
    writePhantom("a", 1);
    writePhantom("b", 2);
    importFolder(m_exports.path());
    check(0);
    check(1);
    const QString second = cell(1, 1);
    click("Start Segmentation");
    ASSERT_TRUE(progress());
    auto* const bar = progress()->findChild<QProgressBar*>();
    auto* const cancel = progress()->findChild<QPushButton*>();
    ASSERT_TRUE(bar && cancel);
    QObject::connect(bar, &QProgressBar::valueChanged, cancel, [cancel](int value) {
        if (value == 1) {
            QTest::mouseClick(cancel, Qt::LeftButton);
        }
    });
    waitForTheEnd();
    EXPECT_EQ(countInLog("Segmentation success for patient"), 1);
    EXPECT_EQ(logTexts().last(), QStringLiteral("Segmentation error..."));

    segmentChecked();
    EXPECT_EQ(countInLog("Segmentation success for patient " + second), 1);
    EXPECT_EQ(countInLog("Segmentation success for patient"), 1);
}

TEST_F(BatchSegmentation, KeepsTheUserOutWithAProgressThatCountsTheScans)
{
    writePhantom("a", 1);
    writePhantom("b", 2);
    importFolder(m_exports.path());
    check(0);
    check(1);
    click("Start Segmentation");
    ASSERT_TRUE(progress());
    EXPECT_EQ(progress()->windowModality(), Qt::WindowModal);
    EXPECT_EQ(progress()->maximum(), 2);
    EXPECT_EQ(progress()->value(), 0);
    EXPECT_EQ(progress()->labelText(), QStringLiteral("Batch segementing OCTs..."));
    bool isThereWhileTheLastOneRuns = false;
    const QObject context;
    QObject::connect(&log(), &QTextEdit::textChanged, &context, [&] {
        const QString text = log().toPlainText();
        if (countInLog("success") == 1 && text.endsWith(QLatin1Char('.'))) {
            isThereWhileTheLastOneRuns = progress() && progress()->value() == 1;
        }
    });
    waitForTheEnd();
    EXPECT_TRUE(isThereWhileTheLastOneRuns);
    EXPECT_EQ(countInLog("Segmentation success"), 2);
}

TEST_F(BatchSegmentation, WarningsNameTheirScanAndTheEndCountsTheScansThatHaveThem)
{
    writePhantom("a", 1, Pattern::Volume, Kind::Normal, fewRows);
    writePhantom("b", 2);
    importFolder(m_exports.path());
    checkAll();
    const int bad = cell(0, 1).contains('1') ? 0 : 1;
    segmentChecked();
    ASSERT_EQ(countInLog("Segmentation success for patient"), 2);
    const QString start = QString("Warning for scan %1 of patient %2 in study DefaultStudy: ")
                              .arg(cell(bad, 4), cell(bad, 1));
    EXPECT_GT(countInLog(start), 0) << log().toPlainText().toStdString();
    EXPECT_EQ(countInLog("Warning"), countInLog(start)) << "the good scan has warnings";
    const QStringList lines = logTexts();
    const int success = lines.indexOf(lines.filter("success for patient " + cell(bad, 1)).first());
    EXPECT_TRUE(lines.at(success + 1).startsWith(start)) << lines.at(success + 1);
    EXPECT_TRUE(lines.at(success + 1).contains("no surface found"));
    EXPECT_EQ(colorInLog(lines.at(success + 1)), QColor(Qt::red));
    EXPECT_EQ(lines.last(), QStringLiteral("Scans with warnings: 1 of 2. Look at their B-scans "
                                           "before you use the numbers."));
    EXPECT_EQ(colorInLog(lines.last()), QColor(Qt::red));
    EXPECT_EQ(lines.at(lines.size() - 2), QStringLiteral("Finished batch-segmenting OCT scans"));
    // The layers are stored all the same.
    reopenStore();
    for (Patient* const patient : patients()) {
        expectLayers(*patient, normalLayers);
    }
}

TEST_F(BatchSegmentation, WarningsOfACancelledBatchAreCountedToo)
{
    writePhantom("a", 1, Pattern::Volume, Kind::Normal, fewRows);
    writePhantom("b", 2, Pattern::Volume, Kind::Normal, fewRows);
    importFolder(m_exports.path());
    checkAll();
    const ProgressCanceller canceller(
        window(), [this](QProgressDialog&) { return countInLog("Warning for scan") > 0; });
    segmentChecked();
    EXPECT_TRUE(canceller.hasCancelled());
    EXPECT_EQ(countInLog("Segmentation success for patient"), 1);
    EXPECT_EQ(countInLog("Scans with warnings: 1 of 1."), 1) << log().toPlainText().toStdString();
}

TEST_F(BatchSegmentation, WarningsAreCountedAnewInEachBatch)
{
    writePhantom("a", 1, Pattern::Volume, Kind::Normal, fewRows);
    importFolder(m_exports.path());
    for (int run = 0; run < 2; ++run) {
        check(0);
        segmentChecked();
        EXPECT_EQ(countInLog("Scans with warnings: 1 of 1."), 1);
    }
    segmentChecked();
    EXPECT_EQ(logTexts(), QStringList{"Finished batch-segmenting OCT scans"});
}

TEST_F(BatchSegmentation, PrintsWhichScansItIsGoingToSegment)
{
    const phantom::Export written = writePhantom("a", 1);
    importFolder(m_exports.path());
    check(0);
    const test::TraceCapture trace;
    segmentChecked();
    EXPECT_TRUE(trace.lines().contains("going to segment " + written.seriesId));
    EXPECT_TRUE(trace.lines().contains("not cancelled, starting next segmentation"));
}

} // namespace

} // namespace kelp::oct
