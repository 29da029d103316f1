#include "ManagerTransferSupport.h"

#include <QLabel>
#include <QProgressDialog>
#include <QPushButton>

namespace {

using namespace managertest;

class ManagerExportTest : public TransferFixture
{
protected:
    static void clickCheckBox(QDialog& dialog, const QString& name)
    {
        auto& list = *dialog.findChild<QTreeView*>("exportList");
        const QModelIndexList found =
            list.model()->match(list.model()->index(0, 0), Qt::DisplayRole, name);
        ASSERT_EQ(found.size(), 1) << name.toStdString();
        const QRect line = list.visualRect(found.front());
        QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::NoModifier,
                          {line.left() + line.height() / 2, line.center().y()});
    }

    static QString chosen(QDialog& dialog)
    {
        return dialog.findChild<QLabel*>("chosenCount")->text();
    }

    static QStringList exportedNames(const QString& folder)
    {
        QStringList names;
        const auto manifest = kelp::exchange::Manifest::read(folder);
        for (const auto& patient : manifest.getPatients()) {
            names.append(patient.name);
        }
        return names;
    }
};

TEST_F(ManagerExportTest, ThePatientsSelectedInTheListAreChosenAtFirst)
{
    clickPatient("Ada");
    clickPatient("Lise", Qt::ControlModifier);
    m_dialogs.expect([this](QDialog& dialog) {
        EXPECT_EQ(chosen(dialog), QString("2 patients selected"));
        type(dialog, "exportFolder", m_target);
        DialogDriver::click(dialog, "Export");
    });
    expectReport("Export");
    click("exportButton");
    const QString folder = onlyExport();
    EXPECT_EQ(exportedNames(folder), (QStringList{"Ada", "Lise"}));
    EXPECT_TRUE(m_report.contains("Exported 2 patients with 2 files")) << m_report.toStdString();
    EXPECT_TRUE(m_report.contains(folder)) << m_report.toStdString();
    EXPECT_EQ(m_reportIcon, QMessageBox::Information);
    EXPECT_EQ(listedNames().size(), 3) << "what was exported is still here";
}

TEST_F(ManagerExportTest, PatientsAreChosenBySearchByAllAndNoneAndOneByOne)
{
    m_dialogs.expect([this](QDialog& dialog) {
        auto* const start = DialogDriver::findButton(dialog, "Export");
        type(dialog, "exportFolder", m_target);
        EXPECT_EQ(chosen(dialog), QString("0 patients selected"));
        EXPECT_FALSE(start->isEnabled());
        clickCheckBox(dialog, "Ada");
        EXPECT_EQ(chosen(dialog), QString("1 patient selected"));
        EXPECT_TRUE(start->isEnabled());
        clickCheckBox(dialog, "Ada");
        EXPECT_EQ(chosen(dialog), QString("0 patients selected"));
        DialogDriver::click(dialog, "Select All");
        EXPECT_EQ(chosen(dialog), QString("3 patients selected"));
        type(dialog, "exportSearch", "gra");
        EXPECT_EQ(chosen(dialog), QString("3 patients selected")) << "the search hides, no more";
        DialogDriver::click(dialog, "Select None");
        EXPECT_EQ(chosen(dialog), QString("2 patients selected"));
        type(dialog, "exportSearch", "");
        clickCheckBox(dialog, "Lise");
        EXPECT_EQ(chosen(dialog), QString("1 patient selected"));
        DialogDriver::click(dialog, "Export");
    });
    expectReport("Export");
    click("exportButton");
    EXPECT_EQ(exportedNames(onlyExport()), QStringList("Ada"));
}

TEST_F(ManagerExportTest, TheDestinationMustBeAFolderAndIsRemembered)
{
    clickPatient("Ada");
    m_dialogs.expect([this](QDialog& dialog) {
        auto* const start = DialogDriver::findButton(dialog, "Export");
        const auto* const note = dialog.findChild<QLabel*>("note");
        type(dialog, "exportFolder", m_target + "/missing");
        EXPECT_FALSE(start->isEnabled());
        EXPECT_EQ(note->text(), QString("There is no such folder."));
        type(dialog, "exportFolder", "");
        EXPECT_FALSE(start->isEnabled());
        EXPECT_EQ(note->text(), QString("Choose a destination."));
        DialogDriver::click(dialog, "Browse");
        EXPECT_FALSE(start->isEnabled()) << "nothing was chosen";
        DialogDriver::click(dialog, "Browse");
        EXPECT_TRUE(start->isEnabled());
        DialogDriver::click(dialog, "Export");
    });
    m_dialogs.expectFileDialog(QString());
    m_dialogs.expectFileDialog(m_target);
    expectReport("Export");
    click("exportButton");
    m_dialogs.expect([this](QDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QLineEdit*>("exportFolder")->text(), m_target);
        DialogDriver::click(dialog, "Cancel");
    });
    click("exportButton");
    onlyExport();
}

TEST_F(ManagerExportTest, WhatIsNotSavedYetIsExportedToo)
{
    clickPatient("Ada");
    AppBase::getCurrentStudy()->setInstitution("Eye Clinic");
    AppBase::markCurrentChanged();
    const QString folder = exportAll();
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    goToAnotherComputer();
    importFolder(folder);
    clickPatient("Ada");
    EXPECT_EQ(AppBase::getCurrentStudy()->getInstitution(), QString("Eye Clinic"));
}

TEST_F(ManagerExportTest, ProgressIsShownAndItsCancelLeavesNoFolder)
{
    // Copying it takes longer than the driver waits between two looks.
    constexpr int manyBytes = 20 * 1000 * 1000;
    store(makePatientWithFile("Aaron", manyBytes));
    m_module->activate();
    m_dialogs.attendAgain("QProgressDialog");
    m_dialogs.expect([this](QDialog& dialog) {
        DialogDriver::click(dialog, "Select All");
        type(dialog, "exportFolder", m_target);
        DialogDriver::click(dialog, "Export");
    });
    m_dialogs.expect([](QDialog& dialog) {
        const auto* const progress = qobject_cast<QProgressDialog*>(&dialog);
        ASSERT_TRUE(progress) << dialog.windowTitle().toStdString();
        EXPECT_EQ(progress->windowTitle(), QString("Export"));
        EXPECT_FALSE(progress->labelText().isEmpty());
        EXPECT_LT(progress->value(), progress->maximum());
        DialogDriver::click(dialog, "Cancel");
    });
    expectReport("Export");
    click("exportButton");
    EXPECT_TRUE(m_report.contains("Nothing was exported.")) << m_report.toStdString();
    EXPECT_TRUE(m_report.contains("Cancelled before the end.")) << m_report.toStdString();
    EXPECT_EQ(QDir(m_target).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList());
}

TEST_F(ManagerExportTest, AFileThatIsGoneIsToldAndTheRestExported)
{
    ASSERT_TRUE(QFile::remove(m_folder + "/binary/Ada/e.xml"));
    const QString folder = exportAll();
    EXPECT_EQ(exportedNames(folder).size(), 3);
    EXPECT_EQ(m_reportIcon, QMessageBox::Warning);
    EXPECT_TRUE(m_report.contains("Ada was exported without a file.")) << m_report.toStdString();
}

TEST_F(ManagerExportTest, ADestinationThatVanishesIsToldAsTheReason)
{
    clickPatient("Ada");
    m_dialogs.expect([this](QDialog& dialog) {
        type(dialog, "exportFolder", m_target);
        ASSERT_TRUE(QDir(m_target).removeRecursively());
        DialogDriver::click(dialog, "Export");
    });
    m_dialogs.expectMessageContaining("Export", "There is no such folder.");
    click("exportButton");
}

} // namespace
