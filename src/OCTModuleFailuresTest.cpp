#include "OCTModuleTestSupport.h"

#include "DialogDriver.h"

#include <gmock/gmock.h>

namespace moduletest {
namespace {

const QString onPurpose = QStringLiteral("on purpose");

/// Every step of the tabs' common slots that can fail, with the texts of its box.
class OCTModuleFailures : public ModuleApplication
{
protected:
    /// A box with this title, whose text is this line and then what the failing view throws.
    static void expectFailure(DialogDriver& dialogs, const char* title, const char* firstLine)
    {
        dialogs.expectMessage(QString::fromUtf8(title), QString::fromUtf8(firstLine) + onPurpose);
    }
    /// Shows scan and segmentation through the shared selection, as another tab left them.
    void select(const OCTScanPtr& scan, const OCTScanSegPtr& segmentation = nullptr)
    {
        m_items.set(scan, segmentation, m_study);
    }
};

TEST_F(OCTModuleFailures, AFailingLoadShowsItsBoxAndTheViewsStillGetTheScan)
{
    select(addDamagedScan(QStringLiteral("damaged")));
    RecordingTab tab(m_items);
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Error Loading the OCT"),
                                    QStringLiteral("Loading the OCT failed:\n"));
    tab.activate();
    EXPECT_TRUE(tab.record.contains(QStringLiteral("scan damaged")));
    // The file that is missing is named.
    EXPECT_TRUE(dialogs.messages().first().contains(QStringLiteral("b1.png")))
        << dialogs.messages().first().toStdString();
    EXPECT_EQ(tab.hintText().toStdString(), "The images of this scan could not be read.");
}

TEST_F(OCTModuleFailures, ViewsThatCannotBeClearedAreToldAtEachTurn)
{
    addScan(QStringLiteral("scan1"));
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    tab.failing = QStringLiteral("clear");
    DialogDriver dialogs;
    expectFailure(dialogs, "Error clearing the OCT", "Clearing the OCT failed:\n");
    tab.deactivate();
    EXPECT_FALSE(m_items.getScan().isNull());

    expectFailure(dialogs, "Error clearing the OCT",
                  "Clearing the OCT from the OCTScan control widget failed:\n");
    emit tab.panel().OCTScanDeselected();
    EXPECT_TRUE(tab.scan().isNull());

    expectFailure(dialogs, "Error clearing the OCT", "Clearing the OCT failed:\n");
    expectFailure(dialogs, "Error Clearing the OCT", "Clearing the OCT failed:\n");
    emit tab.panel().newOCTScanLoaded(OCTScanPtr());
}

TEST_F(OCTModuleFailures, AChangedStudyTellsViewsThatCannotBeCleared)
{
    RecordingTab tab(m_items);
    tab.activate();
    tab.deactivate();
    AppBase::setCurrent(m_patient, addStudy(QStringLiteral("Visit2")));
    tab.failing = QStringLiteral("clear");
    DialogDriver dialogs;
    expectFailure(dialogs, "Error clearing the OCT",
                  "Clearing the OCT from the OCTScan control widget failed:\n");
    expectFailure(dialogs, "Error clearing the OCT", "Clearing the OCT failed:\n");
    expectFailure(dialogs, "Error Clearing the OCT", "Clearing the OCT failed:\n");
    expectFailure(dialogs, "Error setting the OCT", "Clearing the OCT failed:\n");
    expectFailure(dialogs, "Error clearing the OCT",
                  "Clearing the OCT from the OCTScan control widget failed:\n");
    tab.activate();
}

TEST_F(OCTModuleFailures, ASegmentationThatCannotBeDecodedIsTold)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    const OCTScanSegPtr segmentation = addSegmentation(QStringLiteral("seg1"), scan);
    // Says that there are more B-scans than any scan has.
    segmentation->setStoredData(
        QString::fromLatin1(QByteArray(64, static_cast<char>(0x7f)).toBase64()));
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Error setting the OCT"),
                                    QStringLiteral("Setting the OCT in the OCT module failed:\n"));
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    EXPECT_EQ(tab.segmentation(), segmentation);
}

TEST_F(OCTModuleFailures, ASegmentationThatTheViewsRefuseIsTold)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    select(scan, addSegmentation(QStringLiteral("seg1"), scan));
    RecordingTab tab(m_items);
    tab.failing = QStringLiteral("segmentation");
    DialogDriver dialogs;
    expectFailure(dialogs, "Error setting the OCT", "Setting the OCT in the OCT module failed:\n");
    tab.activate();
}

TEST_F(OCTModuleFailures, ANewSegmentationWithoutAScanFailsStepByStep)
{
    RecordingTab tab(m_items);
    tab.activate();
    DialogDriver dialogs;
    const QString title = QStringLiteral("Error Creating a New Segmentation");
    dialogs.expectMessage(
        title,
        QStringLiteral("Creating a new segmentation failed because the current OCT is null"));
    dialogs.expectMessageContaining(title,
                                    QStringLiteral("Creating a new segmentation object failed:\n"));
    dialogs.expectMessageContaining(title, QStringLiteral("Adding a new segmentation failed:\n"));
    dialogs.expectMessageContaining(
        QStringLiteral("Error Setting the Segmentation"),
        QStringLiteral("Setting the segmentation in the control widget failed:\n"));
    emit tab.panel().btnNewSegmentationPressed();
    EXPECT_TRUE(segmentationIds().isEmpty());
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
}

TEST_F(OCTModuleFailures, ANewSegmentationWithoutAStudyIsShownAllTheSame)
{
    addScan(QStringLiteral("scan1"));
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    const OCTScanPtr scan = tab.scan();
    AppBase::setCurrent(m_patient, nullptr);
    emit tab.panel().newOCTScanLoaded(scan);
    DialogDriver dialogs;
    dialogs.expectMessage(QStringLiteral("Error Creating a New Segmentation"),
                          QStringLiteral("Getting the current study failed."));
    emit tab.panel().btnNewSegmentationPressed();
    EXPECT_FALSE(tab.segmentation().isNull());
    EXPECT_TRUE(segmentationIds().isEmpty());
}

TEST_F(OCTModuleFailures, ASegmentationThatTheStudyDoesNotHaveCannotBeRemoved)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    addSegmentation(QStringLiteral("seg1"), scan);
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    ASSERT_EQ(m_study->removeProcessData(QStringLiteral("seg1")).toString(), QString());
    DialogDriver dialogs;
    dialogs.expectMessageContaining(
        QStringLiteral("Error Removing the Segmentation"),
        QStringLiteral("Removing the segmentation from to study failed:\n"));
    emit tab.panel().deleteSegment(tab.segmentation());
    EXPECT_TRUE(tab.segmentation().isNull());
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
}

TEST_F(OCTModuleFailures, AfterADeletionViewsThatRefuseTheScanAreTold)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    addSegmentation(QStringLiteral("seg1"), scan);
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    tab.failing = QStringLiteral("scan");
    DialogDriver dialogs;
    expectFailure(dialogs, "Error setting the OCT segmentation",
                  "Setting the OCT segmentation failed:\n");
    emit tab.panel().deleteSegment(tab.segmentation());
    EXPECT_TRUE(segmentationIds().isEmpty());
}

} // namespace
} // namespace moduletest
