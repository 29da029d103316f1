#include "OCTSegmentationSelectionWidget.h"

#include "ExpectFailure.h"
#include "PanelTestTools.h"
#include "TraceCapture.h"

#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kelp;
using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

class OCTSegmentationSelectionWidgetTest : public testing::Test
{
protected:
    OCTSegmentationSelectionWidgetTest() { showReady(m_widget); }

    OCTScanPtr scanOf(const OCTScanPattern& pattern)
    {
        TestScan contents = lineScan(8, 4, 2);
        contents.pattern = pattern.toString();
        return makeTestScan(contents);
    }
    QStringList listed() const
    {
        QStringList texts;
        for (int row = 0; row < m_list.count(); ++row) {
            texts.append(m_list.item(row)->text());
        }
        return texts;
    }
    void click(int row)
    {
        QTest::mouseClick(m_list.viewport(), Qt::LeftButton, {},
                          m_list.visualItemRect(m_list.item(row)).center());
    }
    OCTScanSegPtr lastSelected() const
    {
        return m_selected.isEmpty() ? OCTScanSegPtr()
                                    : m_selected.last().first().value<OCTScanSegPtr>();
    }

    CurrentStudy m_study;
    OCTSegmentationSelectionWidget m_widget;
    QListWidget& m_list = childOf<QListWidget>(m_widget, "segmentationList");
    QPushButton& m_new = childOf<QPushButton>(m_widget, "newSegmentation");
    QPushButton& m_delete = childOf<QPushButton>(m_widget, "deleteSegmentation");
    QSignalSpy m_selected{&m_widget, SIGNAL(segmentationSelected(OCTScanSegPtr))};
    QSignalSpy m_deletions{&m_widget, SIGNAL(btnDeleteSegmentationPressed())};
    OCTScanPtr m_scan = makeTestScan(lineScan(8, 4, 2));
};

} // namespace

TEST_F(OCTSegmentationSelectionWidgetTest, WithoutAScanNothingIsListedAndNothingCanBePressed)
{
    m_study.addSegmentation(m_scan, "Segment_1");
    m_widget.updateList(m_scan);
    EXPECT_EQ(m_list.count(), 1);
    m_widget.updateList(OCTScanPtr());
    EXPECT_EQ(m_list.count(), 0);
    EXPECT_FALSE(m_new.isEnabled());
    EXPECT_FALSE(m_delete.isEnabled());
}

TEST_F(OCTSegmentationSelectionWidgetTest, ListsTheScansSegmentationsByTheirIds)
{
    for (const char* const id : {"Segment_10", "Segment_2", "Another"}) {
        m_study.addSegmentation(m_scan, id);
    }
    m_study.addSegmentation(makeTestScan(lineScan(8, 4, 2)), "Of another scan");
    m_widget.updateList(m_scan);
    EXPECT_EQ(listed(), QStringList({"Another", "Segment_2", "Segment_10"}));
    EXPECT_TRUE(m_new.isEnabled());
    EXPECT_FALSE(m_delete.isEnabled());
}

TEST_F(OCTSegmentationSelectionWidgetTest, OnlyLoadedScansOfThreePatternsGetASegmentation)
{
    for (const bool segmented : {true, false}) {
        const QList<OCTScanPtr> scans =
            segmented ? QList<OCTScanPtr>{scanOf(OCTScanPatternVolume()),
                                          scanOf(OCTScanPatternSingleBScan()),
                                          scanOf(OCTScanPatternCircularBScan())}
                      : QList<OCTScanPtr>{scanOf(OCTScanPatternStar()),
                                          makeUnloadedTestScan(lineScan(8, 4, 2))};
        for (const OCTScanPtr& scan : scans) {
            m_widget.updateList(scan);
            EXPECT_EQ(m_new.isEnabled(), segmented);
            EXPECT_FALSE(m_delete.isEnabled());
        }
    }
}

TEST_F(OCTSegmentationSelectionWidgetTest, AClickSelectsEnablesTheButtonsAndTellsTheSegmentation)
{
    const OCTScanSegPtr first = m_study.addSegmentation(m_scan, "Segment_1");
    const OCTScanSegPtr second = m_study.addSegmentation(m_scan, "Segment_2");
    m_widget.updateList(m_scan);
    const TraceCapture trace;
    click(1);
    EXPECT_EQ(trace.lines(), QStringList("emitting segmentationSelected()"));
    EXPECT_EQ(m_selected.size(), 1);
    EXPECT_EQ(lastSelected(), second);
    EXPECT_EQ(m_widget.getSelected(), second);
    EXPECT_TRUE(m_new.isEnabled());
    EXPECT_TRUE(m_delete.isEnabled());
    click(1);
    EXPECT_EQ(m_selected.size(), 2) << "a click on what is selected shows it anew";
}

TEST_F(OCTSegmentationSelectionWidgetTest, TheKeysSelectTooAndEnterShowsAnew)
{
    m_study.addSegmentation(m_scan, "Segment_1");
    const OCTScanSegPtr second = m_study.addSegmentation(m_scan, "Segment_2");
    m_widget.updateList(m_scan);
    click(0);
    QTest::keyClick(&m_list, Qt::Key_Down);
    EXPECT_EQ(m_selected.size(), 2);
    EXPECT_EQ(lastSelected(), second);
    QTest::keyClick(&m_list, Qt::Key_Down);
    EXPECT_EQ(m_selected.size(), 2) << "there is none below";
    QTest::keyClick(&m_list, Qt::Key_Return);
    EXPECT_EQ(m_selected.size(), 3);
    EXPECT_EQ(lastSelected(), second);
}

TEST_F(OCTSegmentationSelectionWidgetTest, TheDeleteKeyPressesDeleteOnlyWithASelection)
{
    m_study.addSegmentation(m_scan, "Segment_1");
    m_widget.updateList(m_scan);
    QTest::keyClick(&m_list, Qt::Key_Delete);
    EXPECT_EQ(m_deletions.size(), 0);
    click(0);
    QTest::keyClick(&m_list, Qt::Key_Delete);
    QTest::mouseClick(&m_delete, Qt::LeftButton);
    EXPECT_EQ(m_deletions.size(), 2);
}

TEST_F(OCTSegmentationSelectionWidgetTest, TheSelectionIsKeptWhenTheListIsUpdated)
{
    m_study.addSegmentation(m_scan, "Segment_1");
    const OCTScanSegPtr second = m_study.addSegmentation(m_scan, "Segment_2");
    m_widget.updateList(m_scan);
    click(1);
    m_study.addSegmentation(m_scan, "Segment_0");
    m_widget.updateList(m_scan);
    EXPECT_EQ(listed(), QStringList({"Segment_0", "Segment_1", "Segment_2"}));
    EXPECT_EQ(m_widget.getSelected(), second);
    EXPECT_TRUE(m_delete.isEnabled());
    EXPECT_EQ(m_selected.size(), 1);
}

TEST_F(OCTSegmentationSelectionWidgetTest, ADeletedSegmentationIsListedAndSelectedNoMore)
{
    const OCTScanSegPtr only = m_study.addSegmentation(m_scan, "Segment_1");
    m_widget.updateList(m_scan);
    click(0);
    ASSERT_EQ(m_study->removeProcessData(only->getId()), CaError::nullError);
    m_widget.updateList(m_scan);
    EXPECT_EQ(m_list.count(), 0);
    EXPECT_TRUE(m_widget.getSelected().isNull());
    EXPECT_TRUE(m_new.isEnabled());
    EXPECT_FALSE(m_delete.isEnabled());
}

TEST_F(OCTSegmentationSelectionWidgetTest, WithNothingSelectedBothButtonsStayDisabledUntilTheUpdate)
{
    m_widget.updateList(m_scan);
    m_widget.updateEnabledStatuses();
    EXPECT_FALSE(m_new.isEnabled());
    EXPECT_FALSE(m_delete.isEnabled());
    m_widget.updateList(m_scan);
    EXPECT_TRUE(m_new.isEnabled());
}

TEST_F(OCTSegmentationSelectionWidgetTest, SelectingFromOutsideTellsNothing)
{
    const OCTScanSegPtr first = m_study.addSegmentation(m_scan, "Segment_1");
    m_widget.updateList(m_scan);
    m_widget.setSelected(first);
    EXPECT_EQ(m_widget.getSelected(), first);
    EXPECT_TRUE(m_delete.isEnabled());
    m_widget.setSelected(OCTScanSegPtr(new OCTScanSegmentation(m_scan)));
    EXPECT_TRUE(m_widget.getSelected().isNull());
    EXPECT_EQ(m_selected.size(), 0);
}

TEST_F(OCTSegmentationSelectionWidgetTest, AnItemOfNoSegmentationIsRefused)
{
    QListWidgetItem stranger;
    EXPECT_EQ(failure<Assertion>([&] { m_widget.selectionClicked(&stranger); }),
              "OCTScan/src/view/OCTSegmentationSelectionWidget::kelp::oct::"
              "OCTSegmentationSelectionWidget::selectionClicked: Selected OCT scan segmentation is "
              "null.");
}
