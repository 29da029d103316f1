#include "OCTModuleTestSupport.h"

#include "DialogDriver.h"
#include "TraceCapture.h"
#include "Waiting.h"

#include <QLabel>

#include <gmock/gmock.h>

namespace moduletest {
namespace {

using kelp::oct::test::TraceCapture;

class OCTModuleTest : public ModuleApplication
{
};

TEST_F(OCTModuleTest, WithoutAScanTheSelectionStaysEmptyFromTabToTab)
{
    RecordingTab first(m_items);
    RecordingTab second(m_items);
    first.activate();
    first.deactivate();
    const TraceCapture traces;
    second.activate();
    EXPECT_TRUE(m_items.getScan().isNull());
    EXPECT_TRUE(m_items.getSegmentation().isNull());
    EXPECT_EQ(m_items.getStudy(), m_study);
    const QStringList lines = traces.lines();
    EXPECT_EQ(lines.first().toStdString(), "OCTModule: activate");
    EXPECT_TRUE(lines.contains(QStringLiteral("m_currentStudy is null")));
    EXPECT_TRUE(lines.contains(QStringLiteral("OCTModule::setOCTScanPrivate: oct is null")));
    EXPECT_TRUE(lines.contains(
        QStringLiteral("OCTModule::setOCTScanSegmentationPrivate oct seg and oct are null")));
}

TEST_F(OCTModuleTest, ADoubleClickShowsTheScanInViewsAndPanel)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    RecordingTab tab(m_items);
    tab.activate();
    tab.record.clear();
    const TraceCapture traces;
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    EXPECT_EQ(tab.scan(), scan);
    EXPECT_EQ(tab.panel().getOCT(), scan);
    EXPECT_EQ(tab.record, QStringList({QStringLiteral("clear"), QStringLiteral("scan scan1")}));
    EXPECT_TRUE(traces.lines().contains(QStringLiteral("OCTModule::setOCTScanPrivate")));
}

TEST_F(OCTModuleTest, TheSameScanAgainRebuildsTheViews)
{
    addScan(QStringLiteral("scan1"));
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    tab.record.clear();
    const TraceCapture traces;
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    EXPECT_TRUE(traces.lines().contains(
        QStringLiteral("OCTModule::setOCTScanPrivate: oct has not changed")));
    EXPECT_EQ(tab.record, QStringList({QStringLiteral("clear"), QStringLiteral("scan scan1")}));
}

TEST_F(OCTModuleTest, AnotherStudyClearsTheSelection)
{
    addScan(QStringLiteral("scan1"));
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    press(*tab.getMainWidget(), QStringLiteral("New Segmentation"));
    tab.deactivate();
    const DataPointer<Study> other = addStudy(QStringLiteral("Visit2"));
    AppBase::setCurrent(m_patient, other);
    const TraceCapture traces;
    tab.activate();
    EXPECT_TRUE(tab.scan().isNull());
    EXPECT_TRUE(tab.segmentation().isNull());
    EXPECT_TRUE(m_items.getScan().isNull());
    EXPECT_TRUE(m_items.getSegmentation().isNull());
    EXPECT_TRUE(traces.lines().contains(QStringLiteral("study changed: ") + m_study->getGUID() +
                                        QStringLiteral(" -vs- ") + other->getGUID() +
                                        QStringLiteral(" --> removing all active data items")));
}

TEST_F(OCTModuleTest, ASelectionMadeInTheNewStudyReachesTabsThatKnewTheOldOne)
{
    RecordingTab first(m_items);
    RecordingTab second(m_items);
    first.activate();
    first.deactivate();
    second.activate();
    second.deactivate();
    m_study = addStudy(QStringLiteral("Visit2"));
    AppBase::setCurrent(m_patient, m_study);
    const OCTScanPtr scan = addScan(QStringLiteral("scan2"));
    first.activate();
    doubleClickScan(*first.getMainWidget(), QStringLiteral("scan2"));
    first.deactivate();
    second.activate();
    EXPECT_EQ(second.scan(), scan);
}

TEST_F(OCTModuleTest, ScanSegmentationAndBScanFollowToTheNextTab)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    const OCTScanSegPtr segmentation = addSegmentation(QStringLiteral("seg1"), scan);
    RecordingTab first(m_items);
    RecordingTab second(m_items);
    first.activate();
    doubleClickScan(*first.getMainWidget(), QStringLiteral("scan1"));
    clickSegmentation(*first.getMainWidget(), QStringLiteral("seg1"));
    QTest::mouseClick(first.panel().findChild<QToolButton*>(QStringLiteral("previousBScan")),
                      Qt::LeftButton);
    // Three B-scans open at index 2.
    ASSERT_EQ(first.panel().getActiveBScan(), 1);
    first.deactivate();
    EXPECT_TRUE(first.panel().getOCT().isNull());
    second.activate();
    EXPECT_EQ(second.scan(), scan);
    EXPECT_EQ(second.segmentation(), segmentation);
    EXPECT_EQ(second.record.last().toStdString(), "segmentation seg1");
    EXPECT_EQ(second.panel().getActiveBScan(), 1);
}

TEST_F(OCTModuleTest, AScanWithoutSegmentationIsShownInTheNextTab)
{
    addScan(QStringLiteral("scan1"));
    RecordingTab first(m_items);
    RecordingTab second(m_items);
    first.activate();
    doubleClickScan(*first.getMainWidget(), QStringLiteral("scan1"));
    first.deactivate();
    const TraceCapture traces;
    second.activate();
    EXPECT_TRUE(traces.lines().contains(
        QStringLiteral("OCTModule::setOCTScanSegmentationPrivate oct seg is null: setting oct")));
    EXPECT_EQ(second.record.last().toStdString(), "scan scan1");
    EXPECT_EQ(second.panel().getOCT(), second.scan());
}

TEST_F(OCTModuleTest, AnotherScanDropsTheSegmentationOfTheFormer)
{
    const OCTScanPtr first = addScan(QStringLiteral("scan1"));
    const OCTScanPtr other = addScan(QStringLiteral("scan2"));
    addSegmentation(QStringLiteral("seg1"), first);
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan2"));
    EXPECT_EQ(tab.scan(), other);
    EXPECT_TRUE(tab.segmentation().isNull());
}

TEST_F(OCTModuleTest, TheBScanStaysWhenAnotherSegmentationIsChosen)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    addSegmentation(QStringLiteral("seg1"), scan);
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    QTest::mouseClick(tab.panel().findChild<QToolButton*>(QStringLiteral("previousBScan")),
                      Qt::LeftButton);
    // Three B-scans open at index 2.
    ASSERT_EQ(tab.panel().getActiveBScan(), 1);
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    EXPECT_EQ(tab.panel().getActiveBScan(), 1);
}

TEST_F(OCTModuleTest, NewSegmentationsOfOneMinuteAreNumberedAndSaved)
{
    addScan(QStringLiteral("scan1"));
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    press(*tab.getMainWidget(), QStringLiteral("New Segmentation"));
    EXPECT_TRUE(AppBase::hasUnsavedChanges());
    EXPECT_TRUE(waiting::until([] { return !AppBase::hasUnsavedChanges(); }));
    press(*tab.getMainWidget(), QStringLiteral("New Segmentation"));

    QStringList ids = segmentationIds();
    ASSERT_EQ(ids.size(), 2);
    if (ids.at(0).chopped(2) != ids.at(1).chopped(2)) {
        // The minute has just ended; the third shares it with the second.
        press(*tab.getMainWidget(), QStringLiteral("New Segmentation"));
        ids = segmentationIds().mid(1);
    }
    EXPECT_TRUE(ids.at(0).startsWith(QStringLiteral("Segment_")));
    EXPECT_TRUE(ids.at(0).endsWith(QStringLiteral("_1"))) << ids.at(0).toStdString();
    EXPECT_EQ(ids.at(1), ids.at(0).chopped(1) + QLatin1Char('2'));
    EXPECT_EQ(tab.segmentation()->getId(), ids.at(1));
    EXPECT_EQ(listedSegmentations(*tab.getMainWidget()), segmentationIds());
}

TEST_F(OCTModuleTest, DeletingASegmentationLeavesItsScan)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    addSegmentation(QStringLiteral("seg1"), scan);
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Delete Segmentation"), QStringLiteral("seg1"),
                                    QStringLiteral("Yes"));
    press(*tab.getMainWidget(), QStringLiteral("Delete"));
    EXPECT_TRUE(segmentationIds().isEmpty());
    EXPECT_TRUE(listedSegmentations(*tab.getMainWidget()).isEmpty());
    EXPECT_TRUE(tab.segmentation().isNull());
    EXPECT_EQ(tab.record.last().toStdString(), "scan scan1");
    EXPECT_TRUE(AppBase::hasUnsavedChanges());
}

TEST_F(OCTModuleTest, NothingIsDeletedForNull)
{
    addScan(QStringLiteral("scan1"));
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    tab.record.clear();
    emit tab.panel().deleteSegment(OCTScanSegPtr());
    EXPECT_TRUE(tab.record.isEmpty());
}

TEST_F(OCTModuleTest, WhatThePatientManagerDeletedDoesNotComeBack)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    addSegmentation(QStringLiteral("seg1"), scan);
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    tab.deactivate();
    ASSERT_EQ(m_study->removeProcessData(QStringLiteral("seg1")).toString(), QString());
    tab.activate();
    EXPECT_EQ(tab.scan(), scan);
    EXPECT_TRUE(tab.segmentation().isNull());
}

TEST_F(OCTModuleTest, ASegmentationDoesNotComeBackWithoutItsScan)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    addSegmentation(QStringLiteral("seg1"), scan);
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    tab.deactivate();
    ASSERT_EQ(m_study->removeData(QStringLiteral("scan1")).toString(), QString());
    tab.activate();
    EXPECT_TRUE(tab.scan().isNull());
    EXPECT_TRUE(tab.segmentation().isNull());
    EXPECT_TRUE(tab.panel().getOCT().isNull());
}

TEST_F(OCTModuleTest, APatientDeletedWhileItsScanWasShownLeavesNothing)
{
    addScan(QStringLiteral("scan1"));
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    tab.deactivate();
    AppBase::setCurrent(nullptr, nullptr);
    m_study = nullptr;
    m_patient = nullptr;
    tab.activate();
    EXPECT_TRUE(tab.scan().isNull());
    EXPECT_TRUE(m_items.getScan().isNull());
    EXPECT_EQ(tab.hintText().toStdString(), "Select a patient and a study in the Patient Manager.");
}

TEST_F(OCTModuleTest, ChangingTheMaskMarksThePatientAndShowsTheSegmentationAgain)
{
    const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
    addSegmentation(QStringLiteral("seg1"), scan);
    RecordingTab tab(m_items);
    tab.activate();
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
    tab.record.clear();
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    tab.panel().polygonCreated(QPolygonF(QRectF(0.0, 0.0, 1.0, 0.1)));
    EXPECT_TRUE(AppBase::hasUnsavedChanges());
    EXPECT_EQ(tab.record, QStringList(QStringLiteral("segmentation seg1")));
}

TEST_F(OCTModuleTest, TheHintTellsTheNextStep)
{
    addScan(QStringLiteral("scan1"));
    AppBase::setCurrent(nullptr, nullptr);
    RecordingTab tab(m_items);
    tab.activate();
    EXPECT_EQ(tab.hintText().toStdString(), "Select a patient and a study in the Patient Manager.");
    tab.deactivate();
    AppBase::setCurrent(m_patient, m_study);
    tab.activate();
    EXPECT_EQ(tab.hintText().toStdString(), "Double-click a scan in the list.");
    doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
    EXPECT_EQ(tab.hintText().toStdString(), "");
}

} // namespace
} // namespace moduletest
