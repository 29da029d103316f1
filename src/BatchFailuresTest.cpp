#include "BatchModuleFixture.h"
#include "BatchScans.h"
#include "TraceCapture.h"
#include "Waiting.h"
#include "kelpFileWriter.h"

#include <QMessageBox>

namespace kelp::oct {

namespace {

using phantom::Pattern;
using test::ProgressCanceller;
using test::TestExportOptions;

class BatchFailures : public test::BatchModuleFixture
{
protected:
    /// The file that holds the patient's header in the store.
    QString patientFile(const Patient& patient) const
    {
        return m_store.filePath("store/patients/" + patient.getGUID() + ".xml");
    }
};

TEST_F(BatchFailures, AScanWhoseImagesAreGoneFailsWithItsReasonAndTheNextOneRuns)
{
    writePhantom("a", 1);
    writePhantom("b", 2);
    importFolder(m_exports.path());
    const QString xmlPath = listBatchScans().first().scan->getUri("OCTScanURI").path();
    for (const QFileInfo& file : QFileInfo(xmlPath).dir().entryInfoList({"*.tif"})) {
        ASSERT_TRUE(QFile::remove(file.absoluteFilePath()));
    }
    checkAll();
    const QString broken = cell(0, 1);
    segmentChecked();
    EXPECT_EQ(countInLog("Segmentation error for patient " + broken + ". Reason: "), 1);
    EXPECT_EQ(countInLog(".tif"), 1) << log().toPlainText().toStdString();
    EXPECT_EQ(countInLog("Segmentation success for patient"), 1);
    EXPECT_EQ(countInLog("Finished batch-segmenting OCT scans"), 1);
    // What failed before it began leaves no empty segmentation behind.
    EXPECT_TRUE(segmentationsOf(*patients().first()).isEmpty());
}

TEST_F(BatchFailures, AStarScanIsRefusedWithItsReasonAndTheNextOneRuns)
{
    writePhantom("a", 1, Pattern::Star);
    writePhantom("b", 2);
    importFolder(m_exports.path());
    checkAll();
    segmentChecked();
    EXPECT_EQ(countInLog("are not segmented"), 1) << log().toPlainText().toStdString();
    EXPECT_EQ(colorInLog("Segmentation error for patient " + cell(0, 1) +
                         ". Reason: The scan cannot be segmented: scans of the pattern \"Star\" "
                         "are not segmented."),
              QColor(Qt::red));
    EXPECT_EQ(countInLog("Segmentation success for patient"), 1);
}

TEST_F(BatchFailures, AThousandScansThatCannotBeLoadedFailOneAfterTheOther)
{
    constexpr int count = 1000;
    const DataPointer<Patient> patient(new Patient);
    patient->setName("Empty");
    patient->setId("Empty");
    const DataPointer<Study> study(new Study);
    study->setId("DefaultStudy");
    patient->addStudy(study.data(), false);
    for (int i = 0; i < count; ++i) {
        auto* const scan = new OCTScan;
        scan->setUri("OCTScanURI", URI("file++hra:/nowhere/gone.xml?seriesId=1"));
        study->addData(scan, QString::number(i), false);
    }
    ASSERT_EQ(DataIOManager::storePatient(patient).toString(), QString());
    {
        const test::TraceCapture quiet;
        m_module->activate();
        checkAll();
        segmentChecked();
    }
    EXPECT_EQ(countInLog("Segmentation error for patient Empty. Reason: "), count);
    EXPECT_EQ(countInLog("Finished batch-segmenting OCT scans"), 1);
}

TEST_F(BatchFailures, ABatchOfScansThatFailCanBeCancelledBetweenTwoOfThem)
{
    constexpr int count = 300;
    for (int i = 0; i < 3; ++i) {
        TestExportOptions options;
        options.type = "Star";
        options.seriesId = QString::number(i);
        writeSmallExport(options.seriesId, {}, options);
    }
    importFolder(m_exports.path());
    Study& study = *patients().first()->getStudy("DefaultStudy");
    for (int i = 3; i < count; ++i) {
        auto* const scan = new OCTScan;
        scan->setUri("OCTScanURI", URI("file++hra:/nowhere/gone.xml?seriesId=1"));
        study.addData(scan, QString::number(i), false);
    }
    m_module->activate();
    checkAll();
    const test::TraceCapture trace;
    const ProgressCanceller canceller(window(), [this](QProgressDialog&) {
        return log().toPlainText().contains("Segmentation error for patient");
    });
    segmentChecked();
    EXPECT_TRUE(canceller.hasCancelled());
    const int failed = countInLog("Segmentation error for patient");
    EXPECT_GT(failed, 0);
    EXPECT_LT(failed, count);
    EXPECT_EQ(logTexts().last(), QStringLiteral("Segmentation error..."));
    EXPECT_EQ(trace.lines().filter("batch seg cancelled, done").size(), 1);
    // Nothing goes on by itself afterwards.
    QTest::qWait(0);
    EXPECT_EQ(countInLog("Segmentation error for patient"), failed);
    EXPECT_EQ(countInLog("Finished"), 0);
}

TEST_F(BatchFailures, ScansStudiesAndPatientsThatAreGoneMeanwhileAreNamedAndSkipped)
{
    for (int i = 1; i <= 4; ++i) {
        TestExportOptions options;
        options.type = "Star"; // refused at once, so that the test is quick
        options.seriesId = QString::number(i);
        writeSmallExport(options.seriesId, {{"Muster", "P" + options.seriesId}}, options);
    }
    writePhantom("0", 1);
    importFolder(m_exports.path());
    ASSERT_EQ(table().rowCount(), 5);
    checkAll();
    {
        const ProgressCanceller canceller(
            window(), [this](QProgressDialog&) { return log().toPlainText().contains('.'); });
        segmentChecked();
    }
    // The other four wait. Whatever they point at can be deleted until the next batch.
    const QList<BatchScan> scans = listBatchScans();
    ASSERT_EQ(scans.size(), 5);
    delete scans.at(1).scan.data();
    delete scans.at(2).study.data();
    delete scans.at(3).patient.data();
    DataIOManager::closeStore();
    segmentChecked();
    const QString place = "..\\src\\OCTBatchProcessModule::kelp::oct::OCTBatchProcessModule::"
                          "startSegmentingNextOCT: ";
    EXPECT_EQ(
        countInLog("Segmentation error for patient Eva Maria P1. Reason: " + place + "OCT is null"),
        1)
        << log().toPlainText().toStdString();
    EXPECT_EQ(countInLog("Segmentation error for patient Eva Maria P2. Reason: " + place +
                         "Study is null"),
              1);
    EXPECT_EQ(countInLog("Segmentation error..."), 1);
    EXPECT_EQ(countInLog("are not segmented"), 1);
    EXPECT_EQ(countInLog("Finished batch-segmenting OCT scans"), 1);
}

TEST_F(BatchFailures, APatientThatCannotBeStoredIsReportedAndStaysMarkedForAnotherTry)
{
    writePhantom("a", 1);
    importFolder(m_exports.path());
    int argumentCount = 0;
    const auto application =
        std::make_unique<AppBase>(argumentCount, nullptr, nullptr, false, false);
    const QString file = patientFile(*patients().first());
    QFile stored(file);
    ASSERT_TRUE(stored.open(QIODevice::ReadOnly));
    const QByteArray whole = stored.readAll();
    stored.close();
    writeFileAtomically(file, "damaged by someone");
    // The frame tries again by itself, and shows that it fails.
    m_dialogs->expect([&](QDialog& dialog) {
        EXPECT_TRUE(AppBase::hasUnsavedChanges());
        EXPECT_TRUE(qobject_cast<QMessageBox*>(&dialog));
        dialog.reject();
    });
    check(0);
    segmentChecked();
    EXPECT_TRUE(waiting::until([this] { return m_dialogs->pending() == 0; }));
    EXPECT_EQ(countInLog("Segmentation success for patient"), 1);
    EXPECT_EQ(colorInLog("Could not store patient."), QColor(Qt::red));
    EXPECT_GE(countInLog(file), 1) << "the reason names the file";
    EXPECT_TRUE(AppBase::hasUnsavedChanges());
    writeFileAtomically(file, whole);
    EXPECT_TRUE(AppBase::saveChanges());
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    reopenStore();
    EXPECT_EQ(segmentationsOf(*patients().first()).size(), 1);
}

TEST_F(BatchFailures, AnImportIntoAStoreThatCannotBeWrittenSaysSo)
{
    writeSmallExport("a");
    importFolder(m_exports.path());
    writeFileAtomically(patientFile(*patients().first()), "damaged by someone");
    TestExportOptions options;
    options.seriesId = "2";
    writeSmallExport("b", {}, options);
    importFolder(m_exports.path());
    EXPECT_EQ(colorInLog("Could not store patient."), QColor(Qt::red));
    EXPECT_EQ(countInLog("Finished importing OCTs."), 1);
}

} // namespace

} // namespace kelp::oct
