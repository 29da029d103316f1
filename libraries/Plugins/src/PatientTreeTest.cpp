#include "StoreTestSupport.h"

#include <QDirIterator>
#include <QMap>

namespace {

using namespace storetest;

/// Patients stored by their trees.
class PatientTrees : public StoreFixture
{
protected:
    QMap<QString, QByteArray> storedFiles() const
    {
        QMap<QString, QByteArray> files;
        for (const char* const part : {"/patients", "/studies"}) {
            QDirIterator entries(m_folder + part, QDir::Files);
            while (entries.hasNext()) {
                const QString path = entries.next();
                files.insert(path, readFile(path));
            }
        }
        return files;
    }

    static void readTree(const DataPointer<Patient>& patient, PatientTree& tree)
    {
        ASSERT_EQ(DataIOManager::readPatientTree(patient, tree).toString(), QString());
    }
};

TEST_F(PatientTrees, ATreeIsWhatIsStoredWhetherInMemoryOrNot)
{
    const DataPointer<Patient> patient = makePatient("Ann");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    PatientTree loaded;
    readTree(patient, loaded);
    const auto files = storedFiles();
    reopen();
    ASSERT_FALSE(firstStudy()->isBodyLoaded());
    PatientTree lazy;
    readTree(patients().front(), lazy);
    EXPECT_FALSE(firstStudy()->isBodyLoaded()) << "nobody needs its items";
    for (PatientTree* const tree : {&loaded, &lazy}) {
        ASSERT_EQ(DataIOManager::removePatient(patients().value(0)).toString(), QString());
        EXPECT_TRUE(storedFiles().isEmpty());
        ASSERT_EQ(DataIOManager::storePatientTree(*tree).toString(), QString());
        EXPECT_EQ(storedFiles(), files);
        ASSERT_EQ(patients().size(), 1);
        EXPECT_EQ(patients().front()->getName(), QString("Ann"));
        EXPECT_TRUE(firstStudy()->hasChild("Segment_1"));
    }
}

TEST_F(PatientTrees, TheListsOwnPatientTakesTheNewContentAndFormerStudiesGo)
{
    const DataPointer<Patient> patient = makePatient("Ann");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    PatientTree tree;
    readTree(patient, tree);
    DataPointer<Study> later(new Study);
    later->setId("Later");
    ASSERT_EQ(patient->addStudy(later.data(), false), CaError::nullError);
    patient->setRemark("later");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    ASSERT_TRUE(QFile::exists(studyFile(m_folder, *later)));

    ASSERT_EQ(DataIOManager::storePatientTree(tree).toString(), QString());
    EXPECT_EQ(patients(), QList<Patient*>{patient.data()});
    EXPECT_EQ(patient->getRemark(), QString());
    EXPECT_FALSE(patient->hasChild("Later"));
    EXPECT_TRUE(firstStudy()->hasChild("Segment_1"));
    EXPECT_FALSE(QFile::exists(studyFile(m_folder, *later)));
}

TEST_F(PatientTrees, AfterAFailureTheStoreHoldsWhatItHeldBefore)
{
    const DataPointer<Patient> patient = makePatient("Ann");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    DataPointer<Study> later(new Study);
    later->setId("Later");
    ASSERT_EQ(patient->addStudy(later.data(), false), CaError::nullError);
    patient->getStudy("DefaultStudy")->addData(new Scan, "new", false);
    PatientTree tree;
    readTree(patient, tree);
    const auto before = storedFiles();
    // The new study's file cannot be written, after the changed one's has been.
    ASSERT_TRUE(QDir().mkpath(studyFile(m_folder, *later)));
    reopen();
    EXPECT_NE(DataIOManager::storePatientTree(tree), CaError::nullError);
    EXPECT_EQ(storedFiles(), before);
    EXPECT_EQ(patients().size(), 1);
    EXPECT_FALSE(firstStudy()->hasChild("new"));

    ASSERT_TRUE(QDir().rmdir(studyFile(m_folder, *later)));
    EXPECT_EQ(DataIOManager::storePatientTree(tree).toString(), QString());
    EXPECT_TRUE(firstStudy()->hasChild("new"));
}

TEST_F(PatientTrees, AStudyOfAnotherPatientIsNotTaken)
{
    const DataPointer<Patient> ann = makePatient("Ann");
    ASSERT_EQ(DataIOManager::storePatient(ann), CaError::nullError);
    PatientTree tree;
    readTree(ann, tree);
    tree.header.setAttribute("GUID", "another-patient");
    const auto before = storedFiles();
    const CaError error = DataIOManager::storePatientTree(tree);
    EXPECT_TRUE(error.toString().contains("belongs to another patient already"))
        << error.toString().toStdString();
    EXPECT_EQ(storedFiles(), before);
    EXPECT_EQ(patients().size(), 1);
}

TEST_F(PatientTrees, TreesThatDoNotFitTogetherOrNameNoFileAreRefused)
{
    const DataPointer<Patient> ann = makePatient("Ann");
    PatientTree tree;
    readTree(ann, tree);
    const QString guid = tree.header.getAttribute("GUID");
    for (const char* const evil : {"", "../evil", ".hidden"}) {
        tree.header.setAttribute("GUID", evil);
        EXPECT_NE(DataIOManager::storePatientTree(tree), CaError::nullError) << evil;
    }
    tree.header.setAttribute("GUID", guid);
    DataTreeNode& study = *tree.header.getChildren().front();
    const QString studyGuid = study.getAttribute("GUID");
    study.setAttribute("GUID", "../evil");
    tree.studies.front()->setAttribute("GUID", "../evil");
    EXPECT_NE(DataIOManager::storePatientTree(tree), CaError::nullError);
    study.setAttribute("GUID", studyGuid);
    EXPECT_NE(DataIOManager::storePatientTree(tree), CaError::nullError) << "of another study";
    tree.studies.clear();
    EXPECT_NE(DataIOManager::storePatientTree(tree), CaError::nullError) << "no body";
    tree.header.setType("Study");
    EXPECT_NE(DataIOManager::storePatientTree(tree), CaError::nullError);
    EXPECT_TRUE(storedFiles().isEmpty());
    EXPECT_TRUE(patients().isEmpty());
}

TEST_F(PatientTrees, WithoutPatientOrStoreThereIsNoTree)
{
    PatientTree tree;
    EXPECT_NE(DataIOManager::readPatientTree({}, tree), CaError::nullError);
    const DataPointer<Patient> patient = makePatient("Ann");
    DataIOManager::closeStore();
    EXPECT_NE(DataIOManager::readPatientTree(patient, tree), CaError::nullError);
}

} // namespace
