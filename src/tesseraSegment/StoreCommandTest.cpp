#include "CommandFixture.h"
#include "DataIOManager.h"
#include "OCTScanUtils.h"
#include "Startup.h"
#include "kelpTrace.h"

#include <QDir>
#include <QDirIterator>

using kelp::command::test::CommandFixture;
using kelp::command::test::Finished;

namespace {

struct StoredScan
{
    QString patient;
    QString study;
    QString scan;
    QStringList segmentations;
    int nrLayers = 0;
};

class StoreCommand : public CommandFixture
{
protected:
    QList<StoredScan> stored() const
    {
        kelp::command::registerScanLibrary();
        EXPECT_EQ(DataIOManager::openStore(path("store")).toString(), "");
        QList<Patient*> patients;
        EXPECT_TRUE(DataIOManager::getPatientList(patients) == CaError::nullError);
        QList<StoredScan> scans;
        for (Patient* patient : patients) {
            QList<Data*> studies;
            patient->getAllStudies(studies);
            for (Data* item : studies) {
                addScans(*patient, static_cast<Study*>(item), scans);
            }
        }
        DataIOManager::closeStore();
        return scans;
    }

    int nrCopiedXmlFiles() const
    {
        int count = 0;
        QDirIterator iterator(path("store"), {"export.xml"}, QDir::Files,
                              QDirIterator::Subdirectories);
        while (iterator.hasNext()) {
            iterator.next();
            ++count;
        }
        return count;
    }

private:
    static void addScans(const Patient& patient, Study* study, QList<StoredScan>& scans)
    {
        QList<Data*> items;
        study->getAllData(items);
        for (Data* item : items) {
            StoredScan stored{patient.getName(), study->getId(), item->getId(), {}, 0};
            for (const OCTScanSegPtr& segmentation : kelp::oct::OCTScanUtils::getAllSegmentationsOf(
                     study, OCTScanPtr(static_cast<OCTScan*>(item)))) {
                stored.segmentations.append(segmentation->getId());
                segmentation->getOCT()->ensureLoaded();
                segmentation->ensureDecoded();
                stored.nrLayers = segmentation->getAllLayerNames().size();
            }
            scans.append(stored);
        }
    }
};

TEST_F(StoreCommand, KeepsPatientStudyScanAndSegmentation)
{
    const QString xml = writeExport("in");
    const Finished run = segment({"--store", path("store"), xml});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    const auto scans = stored();
    ASSERT_EQ(scans.size(), 1);
    EXPECT_FALSE(scans[0].patient.isEmpty());
    EXPECT_EQ(scans[0].study, "DefaultStudy");
    EXPECT_EQ(scans[0].scan, "100001");
    ASSERT_EQ(scans[0].segmentations.size(), 1);
    EXPECT_THAT(scans[0].segmentations[0].toStdString(),
                ::testing::MatchesRegex("Segment_[0-9.]+-[0-9][0-9]_[0-9][0-9]_1"));
    EXPECT_GE(scans[0].nrLayers, 6);
}

TEST_F(StoreCommand, DoesNotKeepASkippedScanTwice)
{
    const QString xml = writeExport("in");
    segment({"--store", path("store"), xml});
    ASSERT_EQ(segment({"--store", path("store"), xml}).status, 0);
    const auto scans = stored();
    ASSERT_EQ(scans.size(), 1);
    EXPECT_EQ(scans[0].segmentations.size(), 1);
    EXPECT_EQ(nrCopiedXmlFiles(), 1);
}

TEST_F(StoreCommand, AddsAFurtherSegmentationWhenForced)
{
    const QString xml = writeExport("in");
    segment({"--store", path("store"), xml});
    ASSERT_EQ(segment({"--force", "--store", path("store"), xml}).status, 0);
    const auto scans = stored();
    ASSERT_EQ(scans.size(), 1);
    EXPECT_EQ(scans[0].segmentations.size(), 2);
    EXPECT_EQ(nrCopiedXmlFiles(), 1);
}

TEST_F(StoreCommand, KeepsResultsThatWereMadeWithoutAStore)
{
    const QString xml = writeExport("in");
    segment({xml});
    const Finished run = segment({"--store", path("store"), xml});
    EXPECT_EQ(run.status, 0) << run.errors.toStdString();
    EXPECT_TRUE(run.output.contains("skipped"));
    const auto scans = stored();
    ASSERT_EQ(scans.size(), 1);
    EXPECT_EQ(scans[0].segmentations.size(), 1);
}

TEST_F(StoreCommand, KeepsTheResultsOfAScanThatCannotBeStored)
{
    const QString xml = writeExport("in");
    edit(xml, "<Birthdate>", "<Bornon>");
    edit(xml, "</Birthdate>", "</Bornon>");
    const Finished run = segment({"--store", path("store"), xml});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.errors.contains("not in the store")) << run.errors.toStdString();
    EXPECT_TRUE(run.errors.contains("Got no birthdate from XML")) << run.errors.toStdString();
    EXPECT_EQ(resultNames(), QStringList({"export_100001", "summary.csv"}));
}

TEST_F(StoreCommand, RefusesAStoreThatAnotherProcessHas)
{
    const QString xml = writeExport("in");
    kelp::command::registerScanLibrary();
    ASSERT_TRUE(DataIOManager::openStore(path("store")) == CaError::nullError);
    const Finished run = segment({"--store", path("store"), xml});
    DataIOManager::closeStore();
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.errors.contains(path("store"))) << run.errors.toStdString();
    EXPECT_EQ(resultNames(), QStringList());
}

} // namespace
