#include "PatientIdentity.h"

#include <gtest/gtest.h>

namespace {

using namespace kelp::patients;

DataPointer<Patient> patientNamed(const QString& name)
{
    DataPointer<Patient> patient(new Patient);
    patient->setName(name);
    return patient;
}

TEST(PatientIdentity, ANameIsFirstNamesABlankAndTheLastName)
{
    EXPECT_EQ(joinName({"Ada  Maria ", " Lovelace"}), QString("Ada Maria Lovelace"));
    // As from an export without first names, so that the batch import finds the patient.
    EXPECT_EQ(joinName({"", "Lovelace"}), QString(" Lovelace"));
    EXPECT_EQ(joinName({"Ada", ""}), QString("Ada"));
}

TEST(PatientIdentity, ALastNameWithBlanksComesBackAsEntered)
{
    const DataPointer<Patient> patient(new Patient);
    setDetails(*patient, {{"Jan", "van der Berg"}, QDate(1950, 2, 3), "Male", "remark"});
    EXPECT_EQ(patient->getName(), QString("Jan van der Berg"));
    EXPECT_EQ(detailsOf(*patient).name.firstNames, QString("Jan"));
    EXPECT_EQ(detailsOf(*patient).name.lastName, QString("van der Berg"));
    patient->setName("Jan Meyer");
    EXPECT_EQ(detailsOf(*patient).name.lastName, QString("Meyer"));
}

TEST(PatientIdentity, AnImportedNameIsSplitAtItsLastBlank)
{
    EXPECT_EQ(splitName(*patientNamed("Ada Maria Lovelace")).firstNames, QString("Ada Maria"));
    EXPECT_EQ(splitName(*patientNamed("Ada Maria Lovelace")).lastName, QString("Lovelace"));
    EXPECT_EQ(splitName(*patientNamed(" Lovelace")).firstNames, QString());
    EXPECT_EQ(splitName(*patientNamed(" Lovelace")).lastName, QString("Lovelace"));
    EXPECT_EQ(splitName(*patientNamed("Ada")).firstNames, QString("Ada"));
}

TEST(PatientIdentity, DetailsSetIdAndKeyTextAsTheBatchImportDoes)
{
    const DataPointer<Patient> patient(new Patient);
    setDetails(*patient, {{"Ada", "Lovelace"}, QDate(1950, 2, 3), QString(), QString()});
    EXPECT_EQ(patient->getId(), QString("Ada Lovelace"));
    EXPECT_EQ(patient->getKeyText(),
              QString("Ada Lovelace") + QDate(1950, 2, 3).toString(Qt::TextDate));
}

TEST(PatientIdentity, ThePatientNumberFollowsTheGuid)
{
    const DataPointer<Patient> patient(new Patient);
    EXPECT_EQ(patientNumber(*patient), patient->getGUID().left(8).toUpper());
    EXPECT_EQ(patientNumber(*patient).size(), 8);
}

TEST(PatientIdentity, DatesAreShownWithTheWholeYear)
{
    EXPECT_TRUE(displayDate(QDate(1909, 12, 24)).contains("1909"));
    EXPECT_EQ(displayDate(QDate()), QString());
    EXPECT_EQ(displayName(*patientNamed(" Lovelace")), QString("Lovelace"));
    EXPECT_FALSE(displayName(*patientNamed(QString())).isEmpty());
}

TEST(PatientIdentity, ATwinHasTheSameNameAndBirthDate)
{
    const DataPointer<Patient> first(new Patient);
    const DataPointer<Patient> second(new Patient);
    const PatientDetails ada{{"Ada", "Lovelace"}, QDate(1950, 2, 3), QString(), QString()};
    setDetails(*first, ada);
    const QList<Patient*> patients{first.data()};
    EXPECT_EQ(findTwin(patients, *second, ada), first.data());
    EXPECT_EQ(findTwin(patients, *first, ada), nullptr) << "a patient is not its own twin";
    PatientDetails younger = ada;
    younger.birthDate = QDate(1951, 2, 3);
    EXPECT_EQ(findTwin(patients, *second, younger), nullptr);
}

} // namespace
