#include "ManagerTestSupport.h"

#include "DeletionPlan.h"

namespace {

using namespace managertest;
using kelp::patients::CopiedFiles;
using kelp::patients::DeletionPlan;
using kelp::patients::TreeNode;

void touch(const QString& path)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("pixels");
}

class CopiedFilesTest : public ManagerFixture
{
protected:
    QString inBinary(const QString& name) const { return m_folder + "/binary/" + name; }

    /// A scan of these files, the first by its own path, the others as the import lists images.
    static DataPointer<Data> scanOf(const QStringList& paths)
    {
        const DataPointer<Data> scan(new Scan);
        for (int i = 0; i < paths.size(); ++i) {
            touch(paths[i]);
            QString path = paths[i];
            const QString key = i == 0 ? QString("OCTScanURI") : QString("SliceImage%1").arg(i - 1);
            const QString text = i == 0 ? "file++hra:" + path + "?seriesId=1"
                                        : "file++dummy:" + path.replace('/', '\\');
            EXPECT_EQ(scan->setUri(key, kelp::URI(text)), CaError::nullError);
        }
        return scan;
    }

    static int removeFilesOf(const DataPointer<Data>& scan)
    {
        CopiedFiles files;
        files.addItem(*scan);
        return files.remove();
    }
};

TEST_F(CopiedFilesTest, FilesThatNothingMentionsGoWithTheirFolder)
{
    const auto scan = scanOf({inBinary("HRA_1/e.xml"), inBinary("HRA_1/a.tif")});
    EXPECT_EQ(removeFilesOf(scan), 2);
    EXPECT_FALSE(QFileInfo::exists(inBinary("HRA_1")));
    EXPECT_TRUE(QFileInfo::exists(inBinary("")));
}

TEST_F(CopiedFilesTest, FilesOfAnotherStoredScanStay)
{
    const auto gone = scanOf({inBinary("HRA_1/e.xml"), inBinary("HRA_1/a.tif")});
    const auto kept = scanOf({inBinary("HRA_1/e.xml"), inBinary("HRA_1/b.tif")});
    const DataPointer<Patient> patient = makePatient("Ada", QDate());
    const DataPointer<Study> study = addStudy(*patient, "S");
    ASSERT_EQ(study->addData(kept.data(), "kept", false), CaError::nullError);
    store(patient);
    EXPECT_EQ(removeFilesOf(gone), 1);
    EXPECT_FALSE(QFileInfo::exists(inBinary("HRA_1/a.tif")));
    EXPECT_TRUE(QFileInfo::exists(inBinary("HRA_1/e.xml")));
    EXPECT_TRUE(QFileInfo::exists(inBinary("HRA_1/b.tif")));
}

TEST_F(CopiedFilesTest, FilesOfAScanThatIsNotSavedYetStay)
{
    const DataPointer<Patient> patient = makePatient("Ada", QDate());
    const DataPointer<Study> study = addStudy(*patient, "S");
    store(patient);
    const auto unsaved = scanOf({inBinary("HRA_1/e.xml")});
    ASSERT_EQ(study->addData(unsaved.data(), "unsaved", false), CaError::nullError);
    EXPECT_EQ(removeFilesOf(scanOf({inBinary("HRA_1/e.xml")})), 0);
    EXPECT_TRUE(QFileInfo::exists(inBinary("HRA_1/e.xml")));
}

TEST_F(CopiedFilesTest, NothingOutsideTheStoreIsTouched)
{
    const QString own = m_directory.path() + "/own/e.xml";
    const QString neighbour = m_folder + "/binaries/e.xml";
    const QString climbing = m_folder + "/binary/../../own/climbed.xml";
    EXPECT_EQ(removeFilesOf(scanOf({own})), 0);
    EXPECT_EQ(removeFilesOf(scanOf({neighbour})), 0);
    EXPECT_EQ(removeFilesOf(scanOf({climbing})), 0);
    ASSERT_TRUE(QFile::link(own, inBinary("link.xml")));
    const DataPointer<Data> linked(new Scan);
    linked->setUri("OCTScanURI", kelp::URI("file++hra:" + inBinary("link.xml")));
    EXPECT_EQ(removeFilesOf(linked), 0);
    for (const QString& path : {own, neighbour, climbing}) {
        EXPECT_TRUE(QFileInfo::exists(path)) << path.toStdString();
    }
}

TEST_F(CopiedFilesTest, WhereTheStoreCannotBeSearchedFilesStay)
{
    const auto scan = scanOf({inBinary("HRA_1/e.xml")});
    ASSERT_TRUE(QDir(m_folder + "/studies").removeRecursively());
    EXPECT_EQ(removeFilesOf(scan), 0);
    EXPECT_TRUE(QFileInfo::exists(inBinary("HRA_1/e.xml")));
}

class DeletionPlanTest : public ManagerFixture
{
protected:
    void SetUp() override
    {
        ManagerFixture::SetUp();
        m_patient = makePatient("Ada", QDate());
        m_study = addStudy(*m_patient, "A");
        addStudy(*m_patient, "B");
        QList<Data*> items;
        m_study->getAllData(items);
        m_scan = DataPointer<Data>(items[0]);
        m_study->getAllProcessData(items);
        m_result = DataPointer<Data>(items[0]);
    }
    TreeNode node(const DataPointer<Data>& item) const { return {m_study, item, QString()}; }

    DataPointer<Patient> m_patient;
    DataPointer<Study> m_study;
    DataPointer<Data> m_scan;
    DataPointer<Data> m_result;
};

TEST_F(DeletionPlanTest, AScanTakesItsResultsWithItOnce)
{
    for (const QList<TreeNode>& chosen :
         {QList<TreeNode>{node(m_scan)}, QList<TreeNode>{node(m_result), node(m_scan)}}) {
        const DeletionPlan plan = DeletionPlan::ofNodes(chosen);
        EXPECT_EQ(plan.question(), QString("Delete the scan \"A_scan\" with 1 segmentation?"));
    }
    DeletionPlan plan = DeletionPlan::ofNodes({node(m_scan)});
    EXPECT_EQ(plan.removeNodes(*m_patient), CaError::nullError);
    EXPECT_FALSE(m_study->hasChild("A_scan"));
    EXPECT_FALSE(m_study->hasChild("A_result"));
}

TEST_F(DeletionPlanTest, AResultGoesAlone)
{
    DeletionPlan plan = DeletionPlan::ofNodes({node(m_result)});
    EXPECT_EQ(plan.question(), QString("Delete the segmentation \"A_result\"?"));
    EXPECT_EQ(plan.removeNodes(*m_patient), CaError::nullError);
    EXPECT_TRUE(m_study->hasChild("A_scan"));
}

TEST_F(DeletionPlanTest, WhatAChosenStudyHoldsIsNotCountedTwice)
{
    const TreeNode study{m_study, nullptr, QString()};
    DeletionPlan plan = DeletionPlan::ofNodes({study, node(m_scan), node(m_result)});
    EXPECT_EQ(plan.question(), QString("Delete the study \"A\" with 1 scan and 1 segmentation?"));
    EXPECT_EQ(plan.removeNodes(*m_patient), CaError::nullError);
    EXPECT_FALSE(m_patient->hasChild("A"));
    EXPECT_TRUE(m_patient->hasChild("B"));
}

TEST_F(DeletionPlanTest, PatientsAreCountedWithAllTheyHold)
{
    const DataPointer<Patient> other = makePatient("Grace", QDate());
    addStudy(*other, "C");
    EXPECT_EQ(DeletionPlan::ofPatients({m_patient, other}).question(),
              QString("Delete 2 patients with 3 studies, 3 scans and 3 segmentations?"));
    EXPECT_EQ(DeletionPlan::ofPatients({other}).question(),
              QString("Delete the patient \"Grace\" with 1 study, 1 scan and 1 segmentation?"));
    EXPECT_TRUE(DeletionPlan::ofPatients({}).isEmpty());
}

} // namespace
