#include "AppBase.h"
#include "BatchTab.h"
#include "RealUseFixture.h"
#include "ScanTabs.h"
#include "Study.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QProgressDialog>
#include <QTest>
#include <QTextEdit>

#include <gmock/gmock.h>

// Folders of exports, imported and segmented in one go.

using namespace batchtab;
using kelp::phantom::Pattern;
using testing::Contains;

namespace {

/// The store as another program finds it once the application has ended.
class StoredScans
{
public:
    explicit StoredScans(const QString& store)
    {
        EXPECT_EQ(DataIOManager::openStore(store).toString(), QString());
        QList<Patient*> patients;
        EXPECT_EQ(DataIOManager::getPatientList(patients).toString(), QString());
        for (Patient* const patient : qAsConst(patients)) {
            QList<Data*> studies;
            patient->getAllStudies(studies);
            for (Data* const study : studies) {
                addStudy(static_cast<Study&>(*study));
            }
        }
        m_patients = patients.size();
    }
    ~StoredScans() { DataIOManager::closeStore(); }

    int patients() const { return m_patients; }
    int scans() const { return m_scans; }
    /// Segmentations that have this layer on their first B-scan.
    int segmentationsWith(const QString& layer) const { return m_layers.count(layer); }

private:
    void addStudy(Study& study)
    {
        QList<Data*> items;
        study.getAllData(items);
        m_scans += items.size();
        QList<Data*> results;
        study.getAllProcessData(results);
        for (Data* const result : qAsConst(results)) {
            auto* const segmentation = dynamic_cast<kelp::oct::OCTScanSegmentation*>(result);
            ASSERT_TRUE(segmentation);
            segmentation->ensureDecoded();
            for (const kelp::oct::LayerNamePtr& name : segmentation->getAllLayerNames()) {
                m_layers.append(name->getIdentifier());
            }
        }
    }

    int m_patients = 0;
    int m_scans = 0;
    QStringList m_layers;
};

class RealUseBatch : public RealUseFixture
{
protected:
    static void openTab(ApplicationDriver& user) { user.selectTab(tabName); }
};

TEST_F(RealUseBatch, ImportsAFolderAndSegmentsWhatCanBeSegmented)
{
    writeExport(QStringLiteral("a/volume"), Pattern::Volume, 1);
    writeExport(QStringLiteral("a/section"), Pattern::Section, 5);
    writeExport(QStringLiteral("b/volume"), Pattern::Volume, 2);
    writeExport(QStringLiteral("c/circle"), Pattern::Circle, 3);
    writeExport(QStringLiteral("c/star"), Pattern::Star, 4);
    QStringList listed;
    use([&](ApplicationDriver& user) {
        openTab(user);
        importFolder(user, exports());
        EXPECT_THAT(log(user), Contains(QStringLiteral("Found 5 XMLs to import")));
        EXPECT_EQ(countInLog(user, QStringLiteral("added to patient")), 5);
        EXPECT_EQ(log(user).last(), QStringLiteral("Finished importing OCTs."));
        listed = rows(user);
        listed.sort();
        EXPECT_EQ(listed.size(), 5);

        checkAll(user);
        start(user);
        waitForTheEnd(user);
        EXPECT_EQ(countInLog(user, QStringLiteral("Segmentation success for patient")), 4);
        EXPECT_EQ(countInLog(user, QStringLiteral("Segmentation error for patient")), 1);
        EXPECT_EQ(log(user).last(), QStringLiteral("Finished batch-segmenting OCT scans"));
    });
    use([&](ApplicationDriver& user) {
        EXPECT_EQ(user.currentTab(), tabName);
        QStringList listedAgain = rows(user);
        listedAgain.sort();
        EXPECT_EQ(listedAgain, listed);
    });
    const StoredScans stored(store());
    EXPECT_EQ(stored.patients(), 5);
    EXPECT_EQ(stored.scans(), 5);
    for (const char* const layer : {"ILM", "GCL", "INL", "ONL", "ISe", "BM"}) {
        EXPECT_EQ(stored.segmentationsWith(QString::fromLatin1(layer)), 4) << layer;
    }
}

TEST_F(RealUseBatch, WhatABatchMadeIsThereInTheOtherTabs)
{
    writeExport(QStringLiteral("volume"), Pattern::Volume, 1);
    use([&](ApplicationDriver& user) {
        openTab(user);
        importFolder(user, exports());
        checkAll(user);
        start(user);
        waitForTheEnd(user);
        user.selectTab(QStringLiteral("Patient Manager"));
        user.choosePatient(QStringLiteral("Normal 1"));
        user.chooseLine(QStringLiteral("DefaultStudy"));
        user.selectTab(scantabs::manualTab);
        user.openScan();
        user.choose(user.find<QAbstractItemView>("segmentationList"), 0);
        EXPECT_EQ(scantabs::drawnLayers(user).size(), 6);
    });
}

TEST_F(RealUseBatch, ACancelledImportKeepsWhatIsImportedAndGoesOnLater)
{
    constexpr int exported = 6;
    for (int i = 1; i <= exported; ++i) {
        writeExport(QString::number(i), Pattern::Section, static_cast<std::uint64_t>(i));
    }
    int imported = 0;
    use([&](ApplicationDriver& user) {
        openTab(user);
        user.cancelProgressAt(2);
        importFolder(user, exports());
        EXPECT_EQ(log(user).last(), QStringLiteral("User aborted importing."));
        imported = rows(user).size();
        EXPECT_GE(imported, 2);
        EXPECT_LT(imported, exported);
        EXPECT_EQ(countInLog(user, QStringLiteral("added to patient")), imported);
    });
    use([&](ApplicationDriver& user) {
        EXPECT_EQ(rows(user).size(), imported);
        importFolder(user, exports());
        EXPECT_EQ(countInLog(user, QStringLiteral("already exists for patient")), imported);
        EXPECT_EQ(rows(user).size(), exported);
    });
    EXPECT_EQ(StoredScans(store()).scans(), exported);
}

TEST_F(RealUseBatch, ACancelledBatchKeepsTheScansThatWereDone)
{
    for (int i = 1; i <= 3; ++i) {
        writeExport(QString::number(i), Pattern::Volume, static_cast<std::uint64_t>(i));
    }
    use([&](ApplicationDriver& user) {
        openTab(user);
        importFolder(user, exports());
        checkAll(user);
        const auto canceller = cancelInScan(user, 1);
        start(user);
        waitForTheEnd(user);
        EXPECT_EQ(countInLog(user, QStringLiteral("Segmentation success for patient")), 1);
        EXPECT_EQ(countInLog(user, QStringLiteral("Reason: Segmentation was aborted.")), 1);
        EXPECT_EQ(rows(user).size(), 3);
    });
    EXPECT_EQ(StoredScans(store()).segmentationsWith(QStringLiteral("BM")), 1);
}

TEST_F(RealUseBatch, AnAbortedRunKeepsItsScanReadyForTheNextRun)
{
    const QString xml = writeLargerExport(QStringLiteral("volume")).xmlPath;
    QString payload;
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {xml});
        user.selectTab(scantabs::automaticTab);
        user.openScan();
        user.newSegmentation();
        user.dialogs.expectMessage(QStringLiteral("Segmentation Failure: "),
                                   QStringLiteral("Segmentation was aborted."));
        user.click(QStringLiteral("Segment Normal"));
        user.waitFor([] { return QApplication::activeModalWidget() != nullptr; });
        DialogDriver::click(*QApplication::activeModalWidget(),
                            QStringLiteral("Abort Segmentation"));
        user.waitFor(
            [&user] { return user.dialogs.pending() == 0 && !QApplication::activeModalWidget(); });
        EXPECT_FALSE(scantabs::drawnLayers(user).contains(QStringLiteral("GCL")));
        EXPECT_TRUE(user.isEnabled(QStringLiteral("Segment Normal")));
        payload = user.shownSegmentation()->toBase64String();
        user.waitFor([this, &user] { return isStored(user.shownSegmentation()); });
    });
    use([&](ApplicationDriver& user) {
        user.openScan();
        user.choose(user.find<QAbstractItemView>("segmentationList"), 0);
        EXPECT_EQ(user.shownSegmentation()->toBase64String(), payload);
        EXPECT_TRUE(user.isEnabled(QStringLiteral("Segment Normal")));
    });
}

TEST_F(RealUseBatch, APatientDeletedAfterACancelledBatchStaysDeleted)
{
    for (int i = 1; i <= 2; ++i) {
        writeExport(QString::number(i), Pattern::Volume, static_cast<std::uint64_t>(i));
    }
    use([&](ApplicationDriver& user) {
        openTab(user);
        importFolder(user, exports());
        checkAll(user);
        {
            const auto canceller = cancelInScan(user, 0);
            start(user);
            waitForTheEnd(user);
        }
        user.selectTab(QStringLiteral("Patient Manager"));
        user.choosePatient(QStringLiteral("Normal 2"));
        user.dialogs.expectMessageContaining(QStringLiteral("Delete"), QStringLiteral("Normal 2"),
                                             QStringLiteral("Delete"));
        user.press(user.find<QAbstractItemView>("patientList"), Qt::Key_Delete);
        openTab(user);
        EXPECT_EQ(rows(user).size(), 1);
        // The second scan still waits from the batch that was cancelled.
        start(user);
        waitForTheEnd(user);
    });
    EXPECT_EQ(StoredScans(store()).patients(), 1);
}

} // namespace
