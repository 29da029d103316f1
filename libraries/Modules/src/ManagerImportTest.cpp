#include "ExchangeScanSupport.h"
#include "ManagerTransferSupport.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QPointer>
#include <QProgressDialog>

namespace {

using namespace managertest;

class ManagerImportTest : public TransferFixture
{
protected:
    /// The next question, about this patient, is answered with a button; perhaps for all others.
    void expectQuestion(const QString& name, const QString& answer, bool forAll = false)
    {
        m_dialogs.expect([=](QDialog& dialog) {
            const auto* const box = qobject_cast<QMessageBox*>(&dialog);
            ASSERT_TRUE(box) << dialog.windowTitle().toStdString();
            EXPECT_EQ(box->windowTitle(), QString("Import"));
            EXPECT_TRUE(box->text().startsWith(QString("The patient \"%1\", born ").arg(name)))
                << box->text().toStdString();
            EXPECT_TRUE(box->text().contains("1950")) << box->text().toStdString();
            if (forAll) {
                QTest::mouseClick(dialog.findChild<QCheckBox*>("forAll"), Qt::LeftButton);
            }
            DialogDriver::click(dialog, answer);
        });
    }

    /// After all three were exported.
    void changeAllRemarks()
    {
        for (const char* const name : {"Ada", "Grace", "Lise"}) {
            const DataPointer<Patient> patient = patientNamed(name);
            patient->setRemark("changed");
            store(patient);
        }
    }

    QStringList changedNames()
    {
        QStringList names;
        for (const DataPointer<Patient>& patient : storedPatients()) {
            if (patient->getRemark() == "changed") {
                names.append(patient->getName());
            }
        }
        names.sort();
        return names;
    }

    /// Has a file copied from the camera, a segmentation, a mask and a fovea.
    DataPointer<Patient> storeRealPatient()
    {
        exchangetest::registerScans();
        const DataPointer<Patient> patient = makePatient("Emmy", QDate(1882, 3, 23));
        const DataPointer<Study> study(new Study);
        study->setId("Visit");
        study->setInstitution("Eye Clinic");
        patient->addStudy(study.data(), false);
        const auto scan = exchangetest::importScan(m_directory.path() + "/camera");
        study->addData(scan.data(), "left_eye", false);
        study->addProcessData(exchangetest::makeSegmentation(scan).data(), "Segment_1", false);
        store(patient);
        return patient;
    }

    static OCTScanPtr scanOf(Patient& patient)
    {
        QList<Data*> items;
        patient.getStudy("Visit")->getAllData(items);
        return qobject_cast<OCTScan*>(items.value(0));
    }
    static OCTScanSegPtr segmentationOf(Patient& patient)
    {
        QList<Data*> items;
        patient.getStudy("Visit")->getAllProcessData(items);
        return qobject_cast<kelp::oct::OCTScanSegmentation*>(items.value(0));
    }
};

TEST_F(ManagerImportTest, WhatWasExportedIsTheSameOnAnotherComputer)
{
    const DataPointer<Patient> source = storeRealPatient();
    const OCTScanSegPtr segmentation = segmentationOf(*source);
    const QByteArray pixels = exchangetest::pixelsOf(*scanOf(*source));
    const QString payload = segmentation->toBase64String();
    const QString former = m_folder;
    m_module->activate();
    const QString folder = exportAll();
    goToAnotherComputer();
    ASSERT_TRUE(QDir(former).removeRecursively());
    ASSERT_TRUE(QDir(m_directory.path() + "/camera").removeRecursively());
    importFolder(folder);
    EXPECT_TRUE(m_report.startsWith("Imported 4 patients with ")) << m_report.toStdString();
    EXPECT_EQ(m_reportIcon, QMessageBox::Information);
    ASSERT_TRUE(QDir(folder).removeRecursively());

    EXPECT_EQ(listedNames(), (QStringList{"Ada", "Emmy", "Grace", "Lise"}));
    clickPatient("Emmy");
    EXPECT_EQ(currentStudyName(), QString("Visit"));
    EXPECT_TRUE(details().contains("Eye Clinic"));
    ASSERT_TRUE(line("left_eye"));
    ASSERT_TRUE(line("Segment_1"));
    const DataPointer<Patient> arrived = AppBase::getCurrentPatient();
    EXPECT_NE(arrived, source);
    EXPECT_EQ(arrived->getGUID(), source->getGUID());
    const OCTScanPtr scan = scanOf(*arrived);
    const OCTScanSegPtr result = segmentationOf(*arrived);
    ASSERT_TRUE(scan && result);
    EXPECT_EQ(scan->getGUID(), scanOf(*source)->getGUID());
    EXPECT_EQ(exchangetest::pixelsOf(*scan), pixels);
    EXPECT_EQ(result->getGUID(), segmentation->getGUID());
    EXPECT_EQ(result->getOCT(), scan);
    EXPECT_EQ(result->toBase64String(), payload);
    result->ensureDecoded();
    EXPECT_EQ((*result->getVolumeLayer(kelp::oct::LayerNameILM::create()))(2, 14), 13);
    ASSERT_FALSE(result->getMask()->getPolygons().isEmpty());
    EXPECT_EQ(result->getMask()->getPolygons(), segmentation->getMask()->getPolygons());
    EXPECT_TRUE(result->getFoveaPosition().isSet);
    EXPECT_EQ(result->getFoveaPosition().position.x, 1.04);
    EXPECT_EQ(result->getFoveaPosition().position.y, 2.11);
}

TEST_F(ManagerImportTest, EachPatientThatIsHereIsKeptOrReplacedAsTheUserSays)
{
    const QString folder = exportAll();
    changeAllRemarks();
    importFolder(folder, [this] {
        expectQuestion("Ada", "Keep");
        expectQuestion("Grace", "Replace");
        expectQuestion("Lise", "Keep");
    });
    EXPECT_TRUE(m_report.contains("Replaced: Grace")) << m_report.toStdString();
    EXPECT_TRUE(m_report.contains("There already and left unchanged: Ada, Lise"))
        << m_report.toStdString();
    EXPECT_EQ(listedNames(), (QStringList{"Ada", "Grace", "Lise"}));
    EXPECT_EQ(changedNames(), (QStringList{"Ada", "Lise"}));
}

TEST_F(ManagerImportTest, OneAnswerHoldsForAllIfTheUserWantsIt)
{
    const QString folder = exportAll();
    changeAllRemarks();
    importFolder(folder, [this] { expectQuestion("Ada", "Keep", true); });
    EXPECT_TRUE(m_report.startsWith("Nothing was imported.")) << m_report.toStdString();
    EXPECT_EQ(patientNamed("Lise")->getRemark(), QString("changed"));
    importFolder(folder, [this] {
        expectQuestion("Ada", "Keep");
        expectQuestion("Grace", "Replace", true);
    });
    EXPECT_EQ(changedNames(), QStringList("Ada"));
}

TEST_F(ManagerImportTest, CancelInTheQuestionEndsTheImport)
{
    const QString folder = exportAll();
    changeAllRemarks();
    importFolder(folder, [this] {
        expectQuestion("Ada", "Replace");
        expectQuestion("Grace", "Cancel", true);
    });
    EXPECT_TRUE(m_report.contains("Imported 1 patient with 1 file")) << m_report.toStdString();
    EXPECT_TRUE(m_report.contains("Cancelled before the end.")) << m_report.toStdString();
    importFolder(folder, [this] {
        m_dialogs.expect([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    });
    EXPECT_TRUE(m_report.contains("Cancelled before the end.")) << m_report.toStdString();
    EXPECT_EQ(changedNames(), (QStringList{"Grace", "Lise"}));
}

TEST_F(ManagerImportTest, CancelInTheProgressLeavesNoPartOfAPatient)
{
    // Copying it takes longer than the driver waits between two looks.
    constexpr int manyBytes = 20 * 1000 * 1000;
    store(makePatientWithFile("Aaron", manyBytes));
    m_module->activate();
    const QString folder = exportAll();
    goToAnotherComputer();
    m_dialogs.attendAgain("QProgressDialog");
    importFolder(folder, [this] {
        m_dialogs.expect([](QDialog& dialog) {
            const auto* const progress = qobject_cast<QProgressDialog*>(&dialog);
            ASSERT_TRUE(progress) << dialog.windowTitle().toStdString();
            EXPECT_EQ(progress->windowTitle(), QString("Import"));
            EXPECT_TRUE(progress->labelText().startsWith("Aaron"));
            DialogDriver::click(dialog, "Cancel");
        });
    });
    EXPECT_TRUE(m_report.contains("Nothing was imported.")) << m_report.toStdString();
    EXPECT_TRUE(m_report.contains("Cancelled before the end.")) << m_report.toStdString();
    EXPECT_EQ(listedNames(), QStringList());
    for (const char* const part : {"/patients", "/studies", "/binary"}) {
        EXPECT_EQ(QDir(m_folder + part).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  QStringList())
            << part;
    }
}

TEST_F(ManagerImportTest, AFolderThatIsNoExportIsRefused)
{
    m_dialogs.expectFileDialog(m_target);
    m_dialogs.expectMessageContaining("Import", "was not made by an export");
    click("importButton");
    EXPECT_EQ(listedNames().size(), 3);
}

TEST_F(ManagerImportTest, TheNextImportBeginsWhereTheLastExportLay)
{
    const QString folder = exportAll();
    goToAnotherComputer();
    importFolder(folder);
    m_dialogs.expect([this](QDialog& dialog) {
        const auto* const files = qobject_cast<QFileDialog*>(&dialog);
        ASSERT_TRUE(files);
        EXPECT_EQ(files->directory().absolutePath(), m_target);
        dialog.reject();
    });
    click("importButton");
}

TEST_F(ManagerImportTest, APatientWhoseFilesAreDamagedIsToldAndTheOthersCome)
{
    const QString folder = exportAll();
    const QString copy = folder + "/files/" + patientNamed("Grace")->getGUID() + "/Grace/e.xml";
    ASSERT_TRUE(QFile::resize(copy, 99));
    goToAnotherComputer();
    importFolder(folder);
    EXPECT_EQ(m_reportIcon, QMessageBox::Warning);
    EXPECT_TRUE(m_report.contains("Imported 2 patients with 2 files")) << m_report.toStdString();
    EXPECT_TRUE(m_report.contains("Grace was not imported.")) << m_report.toStdString();
    EXPECT_EQ(listedNames(), (QStringList{"Ada", "Lise"}));
}

TEST_F(ManagerImportTest, TheCurrentPatientIsReplacedWithAllThatIsShownOfIt)
{
    const QString folder = exportAll();
    clickPatient("Ada");
    clickLine("Ada_visit_scan");
    const DataPointer<Patient> patient = AppBase::getCurrentPatient();
    const QPointer<Study> formerStudy = AppBase::getCurrentStudy().data();
    QList<Data*> scans;
    formerStudy->getAllData(scans);
    const QPointer<Data> formerScan = scans.front();
    formerStudy->setInstitution("changed");
    AppBase::markCurrentChanged();
    importFolder(folder, [this] { expectQuestion("Ada", "Replace", true); });
    EXPECT_EQ(AppBase::getCurrentPatient(), patient) << "the list's object stays";
    const DataPointer<Study> study = AppBase::getCurrentStudy();
    ASSERT_TRUE(study);
    EXPECT_EQ(study.data(), patient->getStudy("Ada_visit"));
    EXPECT_EQ(study->getInstitution(), QString());
    EXPECT_FALSE(details().contains("changed"));
    EXPECT_TRUE(formerStudy.isNull()) << "nothing holds what is in no patient any more";
    EXPECT_TRUE(formerScan.isNull());

    clickLine("Ada_visit_result");
    m_dialogs.expect([](QDialog& dialog) {
        type(dialog, "itemName", "renamed");
        DialogDriver::click(dialog, "OK");
    });
    click("renameButton");
    EXPECT_TRUE(AppBase::saveChanges());
    for (const DataPointer<Patient>& stored : storedPatients()) {
        if (stored->getName() == "Ada") {
            EXPECT_TRUE(stored->getStudy("Ada_visit")->hasChild("renamed"));
        }
    }
}

} // namespace
