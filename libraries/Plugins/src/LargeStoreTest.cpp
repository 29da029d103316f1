#include "StoreTestSupport.h"

#include "XMLDataTree.h"

#include <QElapsedTimer>

#include <iostream>

namespace {

using namespace storetest;

TEST(LargeStore, TenThousandPatientsOpenWithoutReadingAStudy)
{
    constexpr int count = 10000;
    constexpr int studiesPerPatient = 3;
    registerItems();
    const QTemporaryDir directory;
    const QString folder = directory.filePath("store");
    ASSERT_EQ(DataIOManager::openStore(folder), CaError::nullError);
    DataIOManager::closeStore();
    for (int i = 0; i < count; ++i) {
        const DataPointer<Patient> patient(new Patient);
        patient->setName(QString("Patient %1").arg(i, 5, 10, QChar('0')));
        patient->setBirthDate(QDate(1940, 1, 1).addDays(i));
        for (int k = 0; k < studiesPerPatient; ++k) {
            auto* const study = new Study;
            study->setId(QString("Study %1").arg(k));
            study->setInstitution("Clinic");
            ASSERT_EQ(patient->addStudy(study, false), CaError::nullError);
        }
        DataTreeNode header;
        DataSaveContext context;
        ASSERT_EQ(patient->doSave(&header, context), CaError::nullError);
        writeFile(patientFile(folder, patient), XMLDataTree::write(header));
    }

    QElapsedTimer timer;
    timer.start();
    ASSERT_EQ(DataIOManager::openStore(folder), CaError::nullError);
    std::cout << "opened " << count << " patients in " << timer.elapsed() << " ms" << std::endl;
    QList<Patient*> patients;
    ASSERT_EQ(DataIOManager::getPatientList(patients), CaError::nullError);
    ASSERT_EQ(patients.size(), count);
    EXPECT_EQ(patients[4321]->getName(), QString("Patient 04321"));
    QList<Data*> studies;
    patients[4321]->getAllStudies(studies);
    ASSERT_EQ(studies.size(), studiesPerPatient);
    EXPECT_FALSE(static_cast<Study*>(studies.front())->isBodyLoaded());
    DataIOManager::closeStore();
}

} // namespace
