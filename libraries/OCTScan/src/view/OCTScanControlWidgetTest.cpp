#include "OCTScanControlWidget.h"

#include "DialogDriver.h"
#include "ExpectFailure.h"
#include "LocalizerGraphicsViewer.h"
#include "MetaInfoText.h"
#include "MouseEvents.h"
#include "PanelTestTools.h"
#include "TraceCapture.h"
#include "kelpCheck.h"

#include <QGroupBox>
#include <QLCDNumber>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSlider>
#include <QTextEdit>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace kelp;
using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

std::string place(const char* function)
{
    return std::string("OCTScan/src/view/OCTScanControlWidget::kelp::oct::OCTScanControlWidget::") +
           function + ": ";
}

class OCTScanControlWidgetTest : public testing::Test
{
protected:
    OCTScanControlWidgetTest()
    {
        m_panel.resize(m_panel.sizeHint().width(), 700);
        showReady(m_panel);
    }
    OCTScanPtr addVolume(int bScans = 5, const char* id = "Scan")
    {
        const OCTScanPtr scan = makeTestScan(lineScan(16, 4, bScans));
        m_study.addScan(scan, id);
        return scan;
    }
    QListWidget& scans() { return childOf<QListWidget>(m_panel, "dataSelectionList"); }
    QListWidget& segmentations() { return childOf<QListWidget>(m_panel, "segmentationList"); }
    LocalizerGraphicsViewer& localizer()
    {
        return childOf<LocalizerGraphicsViewer>(m_panel, "localizerViewer");
    }
    QString information(const char* name)
    {
        return childOf<QTextEdit>(m_panel, name).toPlainText();
    }
    void doubleClickScan(int row)
    {
        const QPoint position = scans().visualItemRect(scans().item(row)).center();
        QTest::mouseClick(scans().viewport(), Qt::LeftButton, {}, position);
        QTest::mouseDClick(scans().viewport(), Qt::LeftButton, {}, position);
    }
    void clickSegmentation(int row)
    {
        QTest::mouseClick(segmentations().viewport(), Qt::LeftButton, {},
                          segmentations().visualItemRect(segmentations().item(row)).center());
    }
    void expectRefused(Data* item, const char* text)
    {
        const OCTScanPtr scan = addVolume();
        m_panel.setOCT(scan);
        m_panel.setActiveBScan(4);
        m_dialogs.expectMessage(QStringLiteral("Error selecting the OCT"),
                                QString::fromLatin1(text));
        m_panel.octScanSelected(item);
        EXPECT_EQ(m_dialogs.pending(), 0);
        EXPECT_EQ(m_loaded.size(), 0);
        EXPECT_EQ(m_panel.getOCT(), scan);
        expectAt(4);
    }
    void expectAt(int index)
    {
        EXPECT_EQ(m_panel.getActiveBScan(), index);
        EXPECT_EQ(localizer().getActiveSlice(), index);
        EXPECT_EQ(childOf<QSlider>(m_panel, "bScanSlider").value(), index);
        EXPECT_EQ(childOf<QLCDNumber>(m_panel, "bScanNumber").intValue(), index + 1);
    }

    CurrentStudy m_study;
    DialogDriver m_dialogs;
    OCTScanControlWidget m_panel;
    QSignalSpy m_loaded{&m_panel, SIGNAL(newOCTScanLoaded(OCTScanPtr))};
    QSignalSpy m_bScans{&m_panel, SIGNAL(bScanSelected(int))};
    QSignalSpy m_aScans{&m_panel, SIGNAL(aScanSelected(int))};
    QSignalSpy m_deletions{&m_panel, SIGNAL(deleteSegment(OCTScanSegPtr))};
};

} // namespace

TEST_F(OCTScanControlWidgetTest, BearsItsCaptions)
{
    QStringList captions;
    for (const auto* const group : m_panel.findChildren<QGroupBox*>()) {
        captions.append(group->title());
    }
    for (const auto* const label : m_panel.findChildren<QLabel*>()) {
        captions.append(label->text());
    }
    for (const char* const caption :
         {"Data Selection", "OCT Scans:", "Corresponding Segmentations:", "OCT Scan Information:",
          "BScan Information:", "Edit Mask:", "Localizer:"}) {
        EXPECT_TRUE(captions.contains(QString::fromLatin1(caption))) << caption;
    }
    for (const char* const caption : {"New Segmentation", "Delete", "Edit Mask"}) {
        EXPECT_TRUE(DialogDriver::findButton(m_panel, QString::fromLatin1(caption))) << caption;
    }
}

TEST_F(OCTScanControlWidgetTest, WithoutAScanBothArrowsAreDisabled)
{
    EXPECT_FALSE(childOf<QToolButton>(m_panel, "previousBScan").isEnabled());
    EXPECT_FALSE(childOf<QToolButton>(m_panel, "nextBScan").isEnabled());
    EXPECT_EQ(m_panel.getActiveBScan(), -1);
}

TEST_F(OCTScanControlWidgetTest, ListsOnlyTheScansOfTheStudy)
{
    const OCTScanPtr scan = addVolume();
    m_study.addSegmentation(scan, "Segment_1");
    ASSERT_EQ(m_study->addData(new Data, QStringLiteral("Something else"), true),
              CaError::nullError);
    ASSERT_EQ(scans().count(), 1);
    EXPECT_EQ(scans().item(0)->text(), QStringLiteral("Scan"));
}

TEST_F(OCTScanControlWidgetTest, ADoubleClickLoadsTheScanAndTellsIt)
{
    const OCTScanPtr scan = makeUnloadedTestScan(lineScan(16, 4, 5));
    m_study.addScan(scan, "Scan");
    m_study.addSegmentation(scan, "Segment_1");
    const TraceCapture trace;
    doubleClickScan(0);
    EXPECT_TRUE(scan->isLoaded());
    EXPECT_EQ(m_loaded.size(), 1);
    EXPECT_EQ(m_loaded.value(0).value(0).value<OCTScanPtr>(), scan);
    EXPECT_EQ(m_panel.getOCT(), scan);
    EXPECT_EQ(segmentations().count(), 1);
    EXPECT_EQ(localizer().getSlicePositions().size(), 5);
    EXPECT_TRUE(trace.lines().contains(QStringLiteral("done")));
}

TEST_F(OCTScanControlWidgetTest, NoDataAreToldInABoxAndLeaveTheStateUnchanged)
{
    expectRefused(nullptr, "Error selecting the OCT: Data is null.");
}

TEST_F(OCTScanControlWidgetTest, WhatIsNoScanIsToldInABoxAndLeavesTheStateUnchanged)
{
    const DataPointer<Data> other(new Data);
    expectRefused(other.data(), "Error selecting the OCT: Data is not an OCT scan.");
}

TEST_F(OCTScanControlWidgetTest, AScanWhoseImagesAreGoneIsToldWithTheFileAndTheOldOneStays)
{
    const QTemporaryDir folder;
    const OCTScanPtr scan = addVolume(5, "A");
    const TestExportOptions options;
    const OCTScanPtr broken = makeTestExportScan(writeTestExport(folder.path(), options));
    ASSERT_TRUE(QFile::remove(folder.filePath(testImageName(options, 1))));
    m_study.addScan(broken, "B");
    m_panel.setOCT(scan);
    m_dialogs.expectMessageContaining(QStringLiteral("Error selecting the OCT"),
                                      testImageName(options, 1));
    doubleClickScan(1);
    EXPECT_EQ(m_dialogs.pending(), 0);
    EXPECT_EQ(m_loaded.size(), 0);
    EXPECT_EQ(m_panel.getOCT(), scan);
    EXPECT_TRUE(scans().item(0)->isSelected());
}

TEST_F(OCTScanControlWidgetTest, TheStudyThatLosesItsShownScanDeselectsIt)
{
    const OCTScanPtr scan = addVolume();
    doubleClickScan(0);
    const QSignalSpy deselections(&m_panel, SIGNAL(OCTScanDeselected()));
    ASSERT_EQ(m_study->removeData(scan->getId()), CaError::nullError);
    m_study->notify(nullptr, "removed");
    EXPECT_EQ(deselections.size(), 1);
    EXPECT_TRUE(m_panel.getOCT().isNull());
    EXPECT_EQ(information("scanInformation"), QString());
}

TEST_F(OCTScanControlWidgetTest, EveryWayOfPagingKeepsAllInStepAndTellsOnce)
{
    TestScan contents = lineScan(16, 4, 5);
    for (int i = 0; i < 5; ++i) {
        contents.metaInfos.append({{QStringLiteral("Id"), QString::number(100 + i)}});
    }
    const OCTScanPtr scan = makeTestScan(contents);
    m_panel.setOCT(scan);
    expectAt(2);
    const auto expectTold = [this](int index) {
        expectAt(index);
        EXPECT_EQ(m_bScans.size(), 1);
        EXPECT_EQ(m_bScans.value(0).value(0).toInt(), index);
        EXPECT_EQ(information("bScanInformation").simplified(),
                  QStringLiteral("Id: %1").arg(100 + index));
        m_bScans.clear();
    };
    QTest::mouseClick(&childOf<QToolButton>(m_panel, "nextBScan"), Qt::LeftButton);
    expectTold(3);
    QTest::keyClick(&childOf<QSlider>(m_panel, "bScanSlider"), Qt::Key_Home);
    expectTold(0);
    QTest::keyClick(&localizer(), Qt::Key_PageDown);
    expectTold(1);
    mouseevents::turnWheel(*localizer().viewport(), mouseevents::wheelDown, Qt::ControlModifier);
    expectTold(2);
    QTest::mouseClick(localizer().viewport(), Qt::LeftButton, {}, seenAt(localizer(), {0.1, 0.4}));
    expectTold(4);
    EXPECT_EQ(m_aScans.size(), 1);
}

TEST_F(OCTScanControlWidgetTest, FollowsAViewerThatPagesByItselfAndTellsNothing)
{
    m_panel.setOCT(addVolume());
    m_panel.setActiveBScan(4);
    expectAt(4);
    m_panel.setActiveAScan(7);
    EXPECT_EQ(localizer().getActivePosition(), 7);
    m_panel.setActiveBScan(5);
    expectAt(4);
    EXPECT_EQ(m_bScans.size(), 0);
    EXPECT_EQ(m_aScans.size(), 0);
}

TEST_F(OCTScanControlWidgetTest, AListenerThatAnswersWithTheSameBScanMakesNoLoop)
{
    m_panel.setOCT(addVolume());
    KELP_CONNECT("", QObject::connect(&m_panel, SIGNAL(bScanSelected(int)), &m_panel,
                                      SLOT(setActiveBScan(int))));
    QTest::keyClick(&localizer(), Qt::Key_Right);
    EXPECT_EQ(m_bScans.size(), 1);
    expectAt(3);
}

TEST_F(OCTScanControlWidgetTest, ShowsEveryKeyOfTheScanTheLocalizerAndTheBScan)
{
    const QTemporaryDir folder;
    const OCTScanPtr scan = phantomScan(folder, phantom::Pattern::Volume, 3);
    m_panel.setOCT(scan);
    const auto expectAll = [](const QString& text, const MetaInfo& metaInfo) {
        ASSERT_FALSE(metaInfo.isEmpty());
        const auto lines = metaInfoLines(metaInfo, QLocale());
        EXPECT_EQ(lines.size(), metaInfo.size());
        for (const MetaInfoLine& line : lines) {
            EXPECT_TRUE(text.contains(line.caption + QStringLiteral(":\n") + line.value))
                << qPrintable(line.caption) << " is not in:\n"
                << qPrintable(text);
        }
    };
    m_panel.setActiveBScan(1);
    expectAll(information("bScanInformation"), scan->getBScan(1)->getMetaInfo());
    expectAll(information("scanInformation"), scan->getMetaInfo());
    expectAll(information("scanInformation"), scan->getLocalizer()->getMetaInfo());
    EXPECT_TRUE(information("scanInformation").contains(QStringLiteral("Localizer")));
}

TEST_F(OCTScanControlWidgetTest, ValuesAreShownAsTextWhateverTheyContain)
{
    TestScan contents = lineScan(16, 4, 1);
    contents.metaInfo.insert(QStringLiteral("Patient Last Name"), QStringLiteral("<b>%1 & Co</b>"));
    m_panel.setOCT(makeTestScan(contents));
    EXPECT_TRUE(information("scanInformation").contains(QStringLiteral("<b>%1 & Co</b>")));
}

TEST_F(OCTScanControlWidgetTest, LongValuesWrapAndThePanelScrollsToTheirEnd)
{
    TestScan contents = lineScan(16, 4, 1);
    contents.metaInfo.insert(QStringLiteral("Patient Last Name"), QString(400, QChar('x')));
    m_panel.setOCT(makeTestScan(contents));
    QApplication::processEvents();
    auto& text = childOf<QTextEdit>(m_panel, "scanInformation");
    EXPECT_GE(text.height(), static_cast<int>(text.document()->size().height()));
    EXPECT_LE(text.document()->size().width(), text.viewport()->width());
    auto* const scroller = m_panel.findChild<QScrollArea*>();
    EXPECT_EQ(scroller->horizontalScrollBar()->maximum(), 0);
    EXPECT_GT(scroller->verticalScrollBar()->maximum(), 0);
    EXPECT_TRUE(text.textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    // The wheel over the text scrolls the panel.
    mouseevents::turnWheel(*text.viewport(), mouseevents::wheelDown, Qt::NoModifier);
    EXPECT_GT(scroller->verticalScrollBar()->value(), 0);
}

TEST_F(OCTScanControlWidgetTest, ABiggerFontMakesThePanelWiderAndCutsNothing)
{
    const int usual = m_panel.sizeHint().width();
    QFont font = m_panel.font();
    font.setPointSize(28);
    m_panel.setFont(font);
    QApplication::processEvents();
    EXPECT_GT(m_panel.sizeHint().width(), usual);
    m_panel.resize(m_panel.sizeHint().width(), 700);
    QApplication::processEvents();
    for (const auto* const button : m_panel.findChildren<QPushButton*>()) {
        EXPECT_GE(button->width(), button->minimumSizeHint().width()) << qPrintable(button->text());
    }
}

TEST_F(OCTScanControlWidgetTest, FailsForANullScanAndWithoutOne)
{
    EXPECT_EQ(failure<Assertion>([this] { m_panel.setOCT(OCTScanPtr()); }),
              place("setOCT") + "OCT scan is null.");
    EXPECT_EQ(failure<Assertion>([this] { m_panel.setActiveBScan(0); }),
              place("setActiveBScan") + "OCT scan is null.");
    EXPECT_EQ(failure<Assertion>([this] { m_panel.setOCTScanSegmentation(OCTScanSegPtr()); }),
              place("setOCTScanSegmentation") + "OCT scan segmentation is null.");
    const OCTScanSegPtr segmentation(new OCTScanSegmentation(makeTestScan(lineScan(8, 4, 2))));
    EXPECT_EQ(failure<Assertion>([&] { m_panel.setOCTScanSegmentation(segmentation); }),
              place("setOCTScanSegmentation") + "OCT scan is null.");
}

TEST_F(OCTScanControlWidgetTest, AClickedSegmentationIsToldAndSelectedOneIsKeptByRefresh)
{
    const OCTScanPtr scan = addVolume();
    const OCTScanSegPtr segmentation = m_study.addSegmentation(scan, "Segment_2");
    m_panel.setOCT(scan);
    const QSignalSpy selections(&m_panel, SIGNAL(segmentationSelected(OCTScanSegPtr)));
    clickSegmentation(0);
    ASSERT_EQ(selections.size(), 1);
    EXPECT_EQ(selections[0][0].value<OCTScanSegPtr>(), segmentation);
    m_panel.setOCTScanSegmentation(segmentation);
    m_study.addSegmentation(scan, "Segment_1");
    m_panel.refresh();
    ASSERT_EQ(segmentations().count(), 2);
    EXPECT_TRUE(segmentations().item(1)->isSelected());
    EXPECT_EQ(selections.size(), 1);
}

TEST_F(OCTScanControlWidgetTest, NewSegmentationIsForwarded)
{
    m_panel.setOCT(addVolume());
    const QSignalSpy wishes(&m_panel, SIGNAL(btnNewSegmentationPressed()));
    DialogDriver::click(m_panel, QStringLiteral("New Segmentation"));
    EXPECT_EQ(wishes.size(), 1);
}

TEST_F(OCTScanControlWidgetTest, AStarCanBeLookedAtButNotSegmented)
{
    const QTemporaryDir folder;
    m_panel.setOCT(phantomScan(folder, phantom::Pattern::Star, 4));
    auto& button = childOf<QPushButton>(m_panel, "newSegmentation");
    EXPECT_FALSE(button.isEnabled());
    EXPECT_FALSE(button.toolTip().isEmpty());
    EXPECT_EQ(localizer().getSlicePositions().size(), 4);
}

TEST_F(OCTScanControlWidgetTest, ADeletionThatIsNotConfirmedDeletesNothing)
{
    const OCTScanPtr scan = addVolume();
    m_study.addSegmentation(scan, "Segment_1");
    m_panel.setOCT(scan);
    clickSegmentation(0);
    m_dialogs.expectMessageContaining(QStringLiteral("Delete Segmentation"),
                                      QStringLiteral("Segment_1"), QStringLiteral("No"));
    DialogDriver::click(m_panel, QStringLiteral("Delete"));
    EXPECT_EQ(m_deletions.size(), 0);
    EXPECT_EQ(segmentations().count(), 1);
}

TEST_F(OCTScanControlWidgetTest, AConfirmedDeletionIsToldAndTheListIsWithoutItAfterwards)
{
    const OCTScanPtr scan = addVolume();
    m_study.addSegmentation(scan, "Segment_1");
    const OCTScanSegPtr second = m_study.addSegmentation(scan, "Segment_2");
    m_panel.setOCT(scan);
    clickSegmentation(1);
    // As the module does with the signal.
    ASSERT_EQ(m_study->removeProcessData(second->getId()), CaError::nullError);
    m_dialogs.expectMessageContaining(QStringLiteral("Delete Segmentation"),
                                      QStringLiteral("Segment_2"), QStringLiteral("Yes"));
    QTest::keyClick(&segmentations(), Qt::Key_Delete);
    ASSERT_EQ(m_deletions.size(), 1);
    EXPECT_EQ(m_deletions[0][0].value<OCTScanSegPtr>(), second);
    ASSERT_EQ(segmentations().count(), 1);
    EXPECT_EQ(segmentations().item(0)->text(), QStringLiteral("Segment_1"));
}

TEST_F(OCTScanControlWidgetTest, DeletingWithoutAScanFails)
{
    m_dialogs.expectMessage(QStringLiteral("Deleting the Segmentation Failed"),
                            QStringLiteral("Deleting the segmentation failed: The OCT is null\n"));
    m_panel.btnDeleteSegmentationPressed();
    EXPECT_EQ(m_deletions.size(), 0);
}

TEST_F(OCTScanControlWidgetTest, ClearingEmptiesThePanel)
{
    const OCTScanPtr scan = addVolume();
    const OCTScanSegPtr segmentation = m_study.addSegmentation(scan, "Segment_1");
    m_panel.setOCT(scan);
    m_panel.setOCTScanSegmentation(segmentation);
    m_panel.clearOCT();
    EXPECT_TRUE(m_panel.getOCT().isNull());
    EXPECT_EQ(m_panel.getActiveBScan(), -1);
    EXPECT_EQ(segmentations().count(), 0);
    EXPECT_TRUE(scans().selectedItems().isEmpty());
    EXPECT_FALSE(childOf<QPushButton>(m_panel, "editMask").isEnabled());
    EXPECT_EQ(information("bScanInformation"), QString());
}
