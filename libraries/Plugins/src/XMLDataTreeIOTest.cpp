#include "StoreTestSupport.h"

namespace {

using namespace storetest;

class Store : public StoreFixture
{
};

TEST_F(Store, APatientComesBackWithEverythingSet)
{
    const DataPointer<Patient> patient = makePatient("Ada Lovelace");
    patient->setKeyText("Ada Lovelace Fri Feb 3 1950");
    patient->setSex("F");
    patient->setRemark("line one\nline two\x01");
    const QString guid = patient->getGUID();
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    reopen();

    ASSERT_EQ(patients().size(), 1);
    const Patient& read = *patients().front();
    EXPECT_EQ(read.getGUID(), guid);
    EXPECT_EQ(read.getId(), QString("Ada Lovelace"));
    EXPECT_EQ(read.getName(), QString("Ada Lovelace"));
    EXPECT_EQ(read.getBirthDate(), QDate(1950, 2, 3));
    EXPECT_EQ(read.getKeyText(), patient->getKeyText());
    EXPECT_EQ(read.getSex(), QString("F"));
    EXPECT_EQ(read.getRemark(), patient->getRemark());
    ASSERT_NE(firstStudy(), nullptr);
    EXPECT_EQ(firstStudy()->getInstitution(), QString("Clinic"));
}

TEST_F(Store, AScanThatItsStudyAndAResultHoldComesBackAsOne)
{
    ASSERT_EQ(DataIOManager::storePatient(makePatient("A")), CaError::nullError);
    reopen();
    QList<Data*> scans;
    QList<Data*> results;
    firstStudy()->getAllData(scans);
    firstStudy()->getAllProcessData(results);
    ASSERT_EQ(scans.size(), 1);
    ASSERT_EQ(results.size(), 1);
    auto* const result = dynamic_cast<Result*>(results.front());
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->scan.data(), scans.front());
    EXPECT_EQ(result->payload, QString("AAAA"));
    EXPECT_EQ(scans.front()->getUri("OCTScanURI").toString(),
              QString("file++hra:/data/e.xml?seriesId=5"));
}

TEST_F(Store, BodiesAreReadOnFirstUseOnly)
{
    const DataPointer<Patient> patient = makePatient("A");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    reopen();
    EXPECT_FALSE(firstStudy()->isBodyLoaded());
    EXPECT_TRUE(firstStudy()->hasChild("5"));
    EXPECT_TRUE(firstStudy()->isBodyLoaded());
}

TEST_F(Store, StoringAPatientWhoseStudiesWereNotReadKeepsThem)
{
    ASSERT_EQ(DataIOManager::storePatient(makePatient("A")), CaError::nullError);
    reopen();
    const DataPointer<Patient> read(patients().front());
    const QByteArray before = readFile(studyFile(m_folder, *firstStudy()));
    read->setName("B");
    ASSERT_EQ(DataIOManager::storePatient(read), CaError::nullError);
    EXPECT_FALSE(firstStudy()->isBodyLoaded());
    EXPECT_EQ(readFile(studyFile(m_folder, *firstStudy())), before);
    reopen();
    EXPECT_EQ(patients().front()->getName(), QString("B"));
    EXPECT_TRUE(firstStudy()->hasChild("Segment_1"));
}

TEST_F(Store, APatientOfAnotherStoreIsStoredWithItsUnreadStudies)
{
    ASSERT_EQ(DataIOManager::storePatient(makePatient("A")), CaError::nullError);
    reopen();
    const DataPointer<Patient> read(patients().front());
    m_folder += "2";
    reopen();
    ASSERT_EQ(DataIOManager::storePatient(read), CaError::nullError);
    reopen();
    EXPECT_TRUE(firstStudy()->hasChild("Segment_1"));
}

TEST_F(Store, AStudyOutlivesTheStoreItCameFrom)
{
    ASSERT_EQ(DataIOManager::storePatient(makePatient("A")), CaError::nullError);
    reopen();
    const DataPointer<Study> study(firstStudy());
    DataIOManager::closeStore();
    EXPECT_TRUE(study->hasChild("5"));
}

TEST_F(Store, RemovedStudiesAndPatientsLeaveNoFiles)
{
    const DataPointer<Patient> patient = makePatient("A");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    const QString study = studyFile(m_folder, *firstStudy());
    ASSERT_TRUE(QFile::exists(study));
    ASSERT_EQ(patient->removeStudy("DefaultStudy"), CaError::nullError);
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    EXPECT_FALSE(QFile::exists(study));
    ASSERT_EQ(DataIOManager::removePatient(patient), CaError::nullError);
    EXPECT_FALSE(QFile::exists(patientFile(m_folder, patient)));
    EXPECT_TRUE(patients().isEmpty());
}

TEST_F(Store, GivesTheSameObjectsAtEveryCall)
{
    const DataPointer<Patient> patient = makePatient("A");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    EXPECT_EQ(patients().front(), patient.data());
    reopen();
    EXPECT_EQ(patients().front(), patients().front());
}

TEST_F(Store, IsListedByName)
{
    for (const char* const name : {"c", "A", "b"}) {
        ASSERT_EQ(DataIOManager::storePatient(makePatient(name)), CaError::nullError);
    }
    reopen();
    QStringList names;
    for (const Patient* const patient : patients()) {
        names.append(patient->getName());
    }
    EXPECT_EQ(names, (QStringList{"A", "b", "c"}));
}

TEST_F(Store, HoldsAFolderForBinaryData)
{
    EXPECT_EQ(DataTreeIO::binaryDataDirUri().path(), m_folder + "/binary");
    EXPECT_TRUE(QDir(m_folder + "/binary").exists());
    DataIOManager::closeStore();
    EXPECT_TRUE(DataTreeIO::binaryDataDirUri().isEmpty());
}

TEST_F(Store, OpeningTheOpenStoreAgainChangesNothing)
{
    const DataPointer<Patient> patient = makePatient("A");
    ASSERT_EQ(DataIOManager::storePatient(patient), CaError::nullError);
    EXPECT_EQ(DataIOManager::openStore(m_folder + "/../store/").toString(), QString());
    EXPECT_EQ(patients().front(), patient.data());
}

TEST_F(Store, IsOpenedWhereTheEnvironmentSaysWhenFirstNeeded)
{
    DataIOManager::closeStore();
    const QByteArray former = qgetenv("TESSERA_STORE");
    qputenv("TESSERA_STORE", QFile::encodeName(m_folder + "-named"));
    EXPECT_EQ(DataIOManager::storePatient(makePatient("A")), CaError::nullError);
    EXPECT_EQ(DataIOManager::storeFolder(), m_folder + "-named");
    qunsetenv("TESSERA_STORE");
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder));
    EXPECT_EQ(DataIOManager::defaultStoreFolder(), m_folder + "/Tessera/store");
    qputenv("TESSERA_STORE", former);
}

TEST(StorePlugins, ASecondCallCreatesNothing)
{
    EXPECT_EQ(createFileIOFactory(), 1);
    EXPECT_EQ(createFileIOFactory(), 1);
    EXPECT_EQ(createXMLDataTreeIOFactory(), 1);
    EXPECT_EQ(createXMLDataTreeIOFactory(), 1);
    const std::unique_ptr<DataTreeIO> io(DataTreeIO::getFactory().create("xml"));
    EXPECT_NE(io, nullptr);
}

} // namespace
