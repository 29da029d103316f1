#include "ManagerTestSupport.h"

#include "PatientIdentity.h"

#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

namespace {

using namespace managertest;

class PatientManagerTest : public ManagerFixture
{
protected:
    static void enterAda(QDialog& dialog)
    {
        EXPECT_EQ(dialog.windowTitle(), QString("New Patient"));
        type(dialog, "lastName", "Lovelace");
        type(dialog, "firstNames", "Ada");
        type(dialog, "birthDate", "1950-02-03");
        QTest::keyClick(dialog.findChild<QComboBox*>("sex"), Qt::Key_Down);
        QTest::keyClicks(dialog.findChild<QPlainTextEdit*>("remark"), "left handed");
        DialogDriver::click(dialog, "OK");
    }

    void enterPatient(const QString& firstNames, const QString& lastName)
    {
        m_dialogs.expect([=](QDialog& dialog) {
            type(dialog, "lastName", lastName);
            type(dialog, "firstNames", firstNames);
            DialogDriver::click(dialog, "OK");
        });
        click("newPatientButton");
    }

    void enterStudy(const QString& name)
    {
        m_dialogs.expect([=](QDialog& dialog) {
            type(dialog, "itemName", name);
            DialogDriver::click(dialog, "OK");
        });
        click("newStudyButton");
    }

    DialogDriver m_dialogs;
};

TEST_F(PatientManagerTest, ANewPatientIsStoredAtOnceAndCurrent)
{
    start();
    QString number;
    m_dialogs.expect([&number](QDialog& dialog) {
        number = dialog.findChild<QLabel*>("patientNumber")->text();
        enterAda(dialog);
    });
    click("newPatientButton");
    EXPECT_EQ(listedNames(), QStringList{"Ada Lovelace"});
    EXPECT_EQ(currentPatientName(), QString("Ada Lovelace"));
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    EXPECT_TRUE(details().contains(number));
    const QList<DataPointer<Patient>> stored = storedPatients();
    ASSERT_EQ(stored.size(), 1);
    EXPECT_EQ(stored[0]->getName(), QString("Ada Lovelace"));
    EXPECT_EQ(stored[0]->getId(), QString("Ada Lovelace"));
    EXPECT_EQ(stored[0]->getBirthDate(), QDate(1950, 2, 3));
    EXPECT_EQ(stored[0]->getSex(), QString("Female"));
    EXPECT_EQ(stored[0]->getRemark(), QString("left handed"));
    EXPECT_EQ(kelp::patients::patientNumber(*stored[0]), number);
}

TEST_F(PatientManagerTest, APatientNeedsANameAndABirthDateThatCanBe)
{
    start();
    m_dialogs.expect([](QDialog& dialog) {
        auto* const ok = DialogDriver::findButton(dialog, "OK");
        EXPECT_FALSE(ok->isEnabled());
        type(dialog, "firstNames", "  ");
        EXPECT_FALSE(ok->isEnabled());
        type(dialog, "firstNames", "Ada");
        EXPECT_TRUE(ok->isEnabled());
        type(dialog, "birthDate", "1950-02-31");
        EXPECT_FALSE(ok->isEnabled());
        EXPECT_FALSE(dialog.findChild<QLabel*>("problem")->text().isEmpty());
        QTest::keyClick(dialog.findChild<QLineEdit*>("birthDate"), Qt::Key_Return);
        EXPECT_TRUE(dialog.isVisible());
        type(dialog, "birthDate", "");
        EXPECT_TRUE(ok->isEnabled());
        DialogDriver::click(dialog, "OK");
    });
    click("newPatientButton");
    EXPECT_EQ(storedNames(), QStringList{"Ada"});
}

TEST_F(PatientManagerTest, ASecondPatientOfTheSameNameAndBirthDateIsAskedFor)
{
    store(makePatient("Ada Lovelace", QDate(1950, 2, 3)));
    start();
    m_dialogs.expect([this](QDialog& dialog) {
        m_dialogs.expectMessageContaining("Patient Exists", "\"Ada Lovelace\"", "No");
        enterAda(dialog);
        EXPECT_TRUE(dialog.isVisible()) << "No leaves the dialog open";
        m_dialogs.expectMessageContaining("Patient Exists", "\"Ada Lovelace\"", "Yes");
        DialogDriver::click(dialog, "OK");
    });
    click("newPatientButton");
    EXPECT_EQ(storedNames(), (QStringList{"Ada Lovelace", "Ada Lovelace"}));
}

TEST_F(PatientManagerTest, EditingChangesNameAndDateAndKeepsTheRest)
{
    const DataPointer<Patient> patient = makePatient("Ada Lovelace", QDate(1950, 2, 3));
    patient->setRemark("first line\nsecond line");
    patient->setSex("unknown word");
    addStudy(*patient, "Baseline");
    store(patient);
    start();
    clickPatient("Ada Lovelace");
    m_dialogs.expect([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QString("Edit Patient"));
        EXPECT_EQ(dialog.findChild<QLineEdit*>("firstNames")->text(), QString("Ada"));
        EXPECT_EQ(dialog.findChild<QComboBox*>("sex")->currentText(), QString("unknown word"));
        type(dialog, "lastName", "King van Ness");
        DialogDriver::click(dialog, "OK");
    });
    press(list(), Qt::Key_F2);
    EXPECT_EQ(listedNames(), QStringList{"Ada King van Ness"});
    EXPECT_EQ(currentPatientName(), QString("Ada King van Ness"));
    EXPECT_TRUE(AppBase::saveChanges());
    const QList<DataPointer<Patient>> stored = storedPatients();
    ASSERT_EQ(stored.size(), 1);
    EXPECT_EQ(stored[0]->getName(), QString("Ada King van Ness"));
    EXPECT_EQ(stored[0]->getLastName(), QString("King van Ness"));
    EXPECT_EQ(stored[0]->getRemark(), QString("first line\nsecond line"));
    EXPECT_EQ(stored[0]->getSex(), QString("unknown word"));
    EXPECT_EQ(stored[0]->getBirthDate(), QDate(1950, 2, 3));
    EXPECT_TRUE(stored[0]->getStudy("Baseline"));
}

TEST_F(PatientManagerTest, FromPatientToStudyToRenameToDelete)
{
    start();
    enterPatient("Ada", "Lovelace");
    m_dialogs.expect([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QString("New Study"));
        EXPECT_EQ(dialog.findChild<QLineEdit*>("itemName")->text(),
                  "Study_" + QDate::currentDate().toString(Qt::ISODate));
        type(dialog, "institution", "Eye Clinic");
        DialogDriver::click(dialog, "OK");
    });
    click("newStudyButton");
    EXPECT_EQ(currentStudyName(), "Study_" + QDate::currentDate().toString(Qt::ISODate));
    EXPECT_TRUE(details().contains("Eye Clinic"));

    m_dialogs.expect([](QDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QLineEdit*>("institution")->text(), QString("Eye Clinic"));
        type(dialog, "itemName", "After 3 months");
        DialogDriver::click(dialog, "OK");
    });
    press(tree(), Qt::Key_F2);
    EXPECT_EQ(currentStudyName(), QString("After_3_months"));
    EXPECT_TRUE(AppBase::getCurrentPatient()->getStudy("After_3_months"));

    m_dialogs.expectMessage("Delete", "Delete the study \"After_3_months\"?", "Delete");
    click("deleteNodesButton");
    EXPECT_EQ(currentStudyName(), QString());
    EXPECT_EQ(tree().topLevelItemCount(), 0);

    m_dialogs.expectMessage("Delete", "Delete the patient \"Ada Lovelace\"?", "Delete");
    press(list(), Qt::Key_Delete);
    EXPECT_EQ(listedNames(), QStringList());
    EXPECT_TRUE(AppBase::getCurrentPatient().isNull());
    EXPECT_EQ(storedNames(), QStringList());
}

TEST_F(PatientManagerTest, ASuggestedStudyNameIsFree)
{
    start();
    enterPatient("Ada", "Lovelace");
    const QString today = "Study_" + QDate::currentDate().toString(Qt::ISODate);
    for (const QString& expected : {today, today + "_2", today + "_3"}) {
        m_dialogs.expect([expected](QDialog& dialog) {
            EXPECT_EQ(dialog.findChild<QLineEdit*>("itemName")->text(), expected);
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
        click("newStudyButton");
        EXPECT_EQ(currentStudyName(), expected);
    }
}

TEST_F(PatientManagerTest, NamesThatAreTakenOrEmptyAreRefused)
{
    const DataPointer<Patient> patient = makePatient("Ada", QDate());
    addStudy(*patient, "A");
    addStudy(*patient, "B");
    store(patient);
    start();
    clickPatient("Ada");
    clickLine("A");
    m_dialogs.expect([](QDialog& dialog) {
        auto* const ok = DialogDriver::findButton(dialog, "OK");
        EXPECT_TRUE(ok->isEnabled()) << "its own name is free";
        type(dialog, "itemName", "B");
        EXPECT_FALSE(ok->isEnabled());
        type(dialog, "itemName", " ");
        EXPECT_FALSE(ok->isEnabled());
        DialogDriver::click(dialog, "Cancel");
    });
    click("renameButton");
    EXPECT_TRUE(patient->getStudy("A"));
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
}

TEST_F(PatientManagerTest, DataIsRenamedAndFoundUnderItsNewName)
{
    const DataPointer<Patient> patient = makePatient("Ada", QDate());
    const DataPointer<Study> study = addStudy(*patient, "A");
    store(patient);
    start();
    clickPatient("Ada");
    clickLine("A_result");
    m_dialogs.expect([](QDialog& dialog) {
        type(dialog, "itemName", "best result");
        DialogDriver::click(dialog, "OK");
    });
    click("renameButton");
    EXPECT_TRUE(study->hasChild("best_result"));
    EXPECT_FALSE(study->hasChild("A_result"));
    ASSERT_TRUE(line("best_result"));
    EXPECT_TRUE(AppBase::saveChanges());
    const auto stored = storedPatients();
    EXPECT_TRUE(stored[0]->getStudy("A")->hasChild("best_result"));
}

TEST_F(PatientManagerTest, AddedDataTakesItsNameOrElseItsSeries)
{
    store(makePatient("Ada", QDate()));
    start();
    clickPatient("Ada");
    enterStudy("S");
    const auto add = [this](const QString& series, const QString& name) {
        m_dialogs.expect([=](QDialog& dialog) {
            EXPECT_EQ(dialog.findChild<QComboBox*>("dataType")->currentText(),
                      QString("Test Image"));
            DialogDriver::click(dialog, "OK");
            EXPECT_TRUE(dialog.isVisible()) << "nothing was entered";
            type(dialog, "seriesEdit", series);
            type(dialog, "scanNameEdit", name);
            DialogDriver::click(dialog, "OK");
        });
        click("addDataButton");
    };
    add("17", "");
    add("17", "");
    add("18", "left eye");
    const DataPointer<Study> study = AppBase::getCurrentStudy();
    for (const char* const id : {"17", "17_2", "left_eye"}) {
        EXPECT_TRUE(study->hasChild(id)) << id;
        EXPECT_TRUE(line(id)) << id;
    }
    EXPECT_EQ(tree().currentItem(), line("left_eye"));
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    QList<Data*> scans;
    const auto stored = storedPatients();
    stored[0]->getStudy("S")->getAllData(scans);
    EXPECT_EQ(scans.size(), 3);
}

TEST_F(PatientManagerTest, EveryCancelledDialogChangesNothing)
{
    const DataPointer<Patient> patient = makePatient("Ada", QDate(1950, 2, 3));
    addStudy(*patient, "A");
    store(patient);
    start();
    clickPatient("Ada");
    clickLine("A");
    for (const char* const button :
         {"newPatientButton", "editPatientButton", "deletePatientsButton", "newStudyButton",
          "addDataButton", "renameButton", "deleteNodesButton", "exportButton"}) {
        m_dialogs.expect(cancelIt());
        click(button);
        m_dialogs.expect([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
        click(button);
    }
    m_dialogs.expectFileDialog(QString());
    click("importButton");
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    EXPECT_EQ(currentStudyName(), QString("A"));
    const auto stored = storedPatients();
    ASSERT_EQ(stored.size(), 1);
    EXPECT_TRUE(stored[0]->getStudy("A")->hasChild("A_scan"));
    EXPECT_TRUE(stored[0]->getStudy("A")->hasChild("A_result"));
}

TEST_F(PatientManagerTest, ButtonsAreOnWhereThereIsSomethingToActOn)
{
    store(makePatient("Ada", QDate()));
    start();
    for (const char* const name : {"editPatientButton", "deletePatientsButton", "newStudyButton",
                                   "addDataButton", "renameButton", "deleteNodesButton"}) {
        EXPECT_FALSE(find<QPushButton>(name).isEnabled()) << name;
    }
    clickPatient("Ada");
    EXPECT_TRUE(find<QPushButton>("editPatientButton").isEnabled());
    EXPECT_TRUE(find<QPushButton>("newStudyButton").isEnabled());
    EXPECT_FALSE(find<QPushButton>("addDataButton").isEnabled());
    enterStudy("S");
    EXPECT_TRUE(find<QPushButton>("addDataButton").isEnabled());
    EXPECT_TRUE(find<QPushButton>("renameButton").isEnabled());
}

} // namespace
