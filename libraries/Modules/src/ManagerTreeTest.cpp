#include "ManagerTestSupport.h"

#include <QMenu>

namespace {

using namespace managertest;

class ManagerTreeTest : public ManagerFixture
{
protected:
    void SetUp() override
    {
        ManagerFixture::SetUp();
        const DataPointer<Patient> patient = makePatient("Ada", QDate(1950, 2, 3));
        addStudy(*patient, "First");
        addStudy(*patient, "Second");
        store(patient);
    }

    void open()
    {
        start();
        clickPatient("Ada");
        line("First")->setExpanded(true);
    }

    void rightClickLine(const QString& name)
    {
        m_dialogs.rightClick(*tree().viewport(), tree().visualItemRect(line(name)).center());
    }

    /// As a newer program would have written it: of a class that this one does not know.
    void makeResultsUnreadable()
    {
        DataIOManager::closeStore();
        const QDir studies(m_folder + "/studies");
        const QStringList names = studies.entryList({"*.xml"}, QDir::Files);
        EXPECT_EQ(names.size(), 2);
        for (const QString& name : names) {
            QFile file(studies.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QByteArray content = file.readAll().replace("TestResult", "TestNewer");
            file.close();
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(content);
        }
        ASSERT_EQ(DataIOManager::openStore(m_folder), CaError::nullError);
    }

    DialogDriver m_dialogs;
};

TEST_F(ManagerTreeTest, TheRightButtonOffersWhatCanBeDoneWithALine)
{
    open();
    m_dialogs.expectMenu("Rename");
    m_dialogs.expect([](QDialog& dialog) {
        EXPECT_EQ(dialog.findChild<QLineEdit*>("itemName")->text(), QString("First_result"));
        type(dialog, "itemName", "renamed");
        DialogDriver::click(dialog, "OK");
    });
    rightClickLine("First_result");
    EXPECT_TRUE(line("renamed"));
    m_dialogs.expectMenu("Delete");
    m_dialogs.expectMessage("Delete", "Delete the segmentation \"renamed\"?", "Delete");
    rightClickLine("renamed");
    EXPECT_FALSE(line("renamed"));
    m_dialogs.expectMenu("New Study");
    m_dialogs.expect(cancelIt());
    rightClickLine("First");
    m_dialogs.expectMenu("Add Data");
    m_dialogs.expect(cancelIt());
    rightClickLine("First");
}

TEST_F(ManagerTreeTest, TheRightButtonOffersWhatCanBeDoneWithAPatient)
{
    open();
    const QPoint ada = list().visualRect(list().model()->index(0, 0)).center();
    for (const char* const entry : {"New Patient", "New Study", "Edit", "Delete", "Export"}) {
        m_dialogs.expectMenu(entry);
        m_dialogs.expect(cancelIt());
        m_dialogs.rightClick(*list().viewport(), ada);
    }
    m_dialogs.expectMenu("Import");
    m_dialogs.expectFileDialog(QString());
    m_dialogs.rightClick(*list().viewport(), ada);
    EXPECT_EQ(listedNames(), QStringList("Ada"));
}

TEST_F(ManagerTreeTest, SeveralLinesGoAtOnce)
{
    open();
    clickLine("First_scan");
    clickLine("Second", Qt::ControlModifier);
    m_dialogs.expectMessage("Delete", "Delete 1 study and 1 scan with 1 scan and 2 segmentations?",
                            "Delete");
    press(tree(), Qt::Key_Delete);
    EXPECT_EQ(tree().topLevelItemCount(), 1);
    EXPECT_EQ(line("First")->childCount(), 0);
    EXPECT_EQ(currentStudyName(), QString("First"));
    const auto stored = storedPatients();
    ASSERT_EQ(stored.size(), 1);
    EXPECT_FALSE(stored[0]->getStudy("Second"));
    EXPECT_FALSE(stored[0]->getStudy("First")->hasChild("First_scan"));
    EXPECT_FALSE(stored[0]->getStudy("First")->hasChild("First_result"));
}

TEST_F(ManagerTreeTest, ADoubleClickMakesAStudyCurrentAndLeavesItOpen)
{
    open();
    ASSERT_EQ(currentStudyName(), QString("Second"));
    const QPoint first = tree().visualItemRect(line("First")).center();
    QTest::mouseClick(tree().viewport(), Qt::LeftButton, Qt::NoModifier, first);
    QTest::mouseDClick(tree().viewport(), Qt::LeftButton, Qt::NoModifier, first);
    EXPECT_EQ(currentStudyName(), QString("First"));
    EXPECT_TRUE(line("First")->isExpanded());
}

TEST_F(ManagerTreeTest, EnterLeadsFromThePatientsIntoTheirStudies)
{
    open();
    press(list(), Qt::Key_Return);
    EXPECT_TRUE(tree().hasFocus());
    QTest::keyClick(&tree(), Qt::Key_Home);
    EXPECT_EQ(currentStudyName(), QString("First"));
    QTest::keyClick(&tree(), Qt::Key_Return);
    EXPECT_EQ(currentStudyName(), QString("First"));
    EXPECT_TRUE(line("First")->isExpanded());
    QTest::keyClick(&tree(), Qt::Key_Down);
    EXPECT_TRUE(details().contains("First_scan"));
}

TEST_F(ManagerTreeTest, AnUnreadableItemIsShownWithItsReasonAndGoesOnlyWhenDeleted)
{
    makeResultsUnreadable();
    open();
    clickLine("First_result");
    EXPECT_EQ(line("First_result")->text(1), QString("Unreadable"));
    EXPECT_TRUE(details().contains("Unreadable item"));
    EXPECT_TRUE(details().contains("TestNewer"));
    EXPECT_FALSE(find<QAbstractButton>("renameButton").isEnabled());
    m_dialogs.expectMessage("Delete", "Delete the unreadable item \"First_result\"?", "Delete");
    click("deleteNodesButton");
    EXPECT_FALSE(line("First_result"));
    EXPECT_TRUE(line("Second_result")) << "the other one stays";
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    const auto stored = storedPatients();
    ASSERT_EQ(stored.size(), 1);
    EXPECT_FALSE(stored[0]->getStudy("First")->hasChild("First_result"));
    EXPECT_TRUE(stored[0]->getStudy("First")->hasChild("First_scan"));
    EXPECT_EQ(stored[0]->getStudy("Second")->getUnreadableItems().size(), 1);
}

} // namespace
