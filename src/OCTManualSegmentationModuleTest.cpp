#include "OCTManualSegmentationModule.h"

#include "DialogDriver.h"
#include "LayerName.h"
#include "OCTModuleTestSupport.h"
#include "OCTSegmentationEditorWidget.h"
#include "TraceCapture.h"
#include "kelpGISliceSegmentationViewer.h"

#include <gmock/gmock.h>

namespace moduletest {
namespace {

using kelp::oct::OCTManualSegmentationModule;
using kelp::oct::OCTSegmentationEditorWidget;
using kelp::oct::test::TraceCapture;

class ManualTab : public ModuleApplication
{
protected:
    void makeTab()
    {
        m_tab = std::make_unique<OCTManualSegmentationModule>(
            &m_items, QStringLiteral("OCT Manual Segmentation"));
        widget().resize(1260, 760);
        widget().show();
        m_tab->activate();
    }
    void TearDown() override
    {
        m_tab.reset();
        ModuleApplication::TearDown();
    }
    QWidget& widget() { return *m_tab->getMainWidget(); }
    OCTSegmentationEditorWidget& editor()
    {
        return *widget().findChild<OCTSegmentationEditorWidget*>();
    }
    OCTScanSegPtr addSegmentedScan()
    {
        const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
        const OCTScanSegPtr segmentation = addSegmentation(QStringLiteral("seg1"), scan);
        segmentation->setVolumeLayer(kelp::oct::test::constantSurface(segmentation, 50),
                                     kelp::oct::LayerNameILM::create());
        return segmentation;
    }

    std::unique_ptr<OCTManualSegmentationModule> m_tab;
};

TEST_F(ManualTab, HasNoButtonsToSegmentOrToExport)
{
    makeTab();
    for (const char* const text : {"Segment Normal", "Segment Drusen", "Segment Mouse", "Export"}) {
        EXPECT_FALSE(findButton(widget(), QString::fromUtf8(text))) << text;
    }
    EXPECT_TRUE(findButton(widget(), QStringLiteral("New Segmentation")));
    EXPECT_TRUE(findButton(widget(), QStringLiteral("Delete")));
}

TEST_F(ManualTab, ShowsTheSelectionOfAnotherTabAndHandsItOn)
{
    const OCTScanSegPtr segmentation = addSegmentedScan();
    m_items.set(segmentation->getOCT(), segmentation, m_study);
    const TraceCapture traces;
    makeTab();
    EXPECT_EQ(editor().getViewer()->getActiveSlice(), 2);
    EXPECT_TRUE(
        traces.lines().contains(QStringLiteral("OCTManualSegmentationModule::setOCTScan()")));
    EXPECT_TRUE(traces.lines().contains(
        QStringLiteral("OCTManualSegmentationModule::setOCTScanSegmentation()")));
    m_items.clear();
    m_tab->deactivate();
    EXPECT_EQ(m_items.getSegmentation(), segmentation);
    EXPECT_TRUE(traces.lines().contains(QStringLiteral("OCTManualSegmentationModule::clearOCT()")));
}

TEST_F(ManualTab, ViewAndPanelPageTogether)
{
    addSegmentedScan();
    makeTab();
    doubleClickScan(widget(), QStringLiteral("scan1"));
    const auto* const panel = widget().findChild<kelp::oct::OCTScanControlWidget*>();
    QTest::mouseClick(panel->findChild<QToolButton*>(QStringLiteral("previousBScan")),
                      Qt::LeftButton);
    EXPECT_EQ(editor().getViewer()->getActiveSlice(), 1);
    editor().getViewer()->setActiveSlice(0);
    EXPECT_EQ(panel->getActiveBScan(), 0);
}

TEST_F(ManualTab, ACorrectionMarksThePatientAsChanged)
{
    addSegmentedScan();
    makeTab();
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    emit editor().segmentationEdited();
    EXPECT_TRUE(AppBase::hasUnsavedChanges());
}

TEST_F(ManualTab, NullIsOnlyTraced)
{
    makeTab();
    const TraceCapture traces;
    m_tab->setOCTScanSegmentation(OCTScanSegPtr());
    m_tab->setOCTScanSegmentation(OCTScanSegPtr(new kelp::oct::OCTScanSegmentation));
    EXPECT_TRUE(traces.lines().contains(
        QStringLiteral("OCTManualSegmentationModule::setOCTScanSegmentation: octSeg is null")));
    EXPECT_TRUE(traces.lines().contains(
        QStringLiteral("OCTManualSegmentationModule::setOCTScanSegmentation: oct is null")));
}

TEST_F(ManualTab, AScanThatTheEditorRefusesIsTold)
{
    m_items.set(addDamagedScan(QStringLiteral("damaged")), nullptr, m_study);
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Error Loading the OCT"),
                                    QStringLiteral("Loading the OCT failed:\n"));
    for (int i = 0; i < 2; ++i) {
        // The text speaks of the segmentation.
        dialogs.expectMessageContaining(QStringLiteral("Error Setting the OCT"),
                                        QStringLiteral("Setting the segmentation failed:\n"));
    }
    const TraceCapture traces;
    makeTab();
    EXPECT_TRUE(traces.lines().contains(QStringLiteral(
        "OCTManualSegmentationModule::setOCTScan: error setting the OCT in the viewer")));
}

} // namespace
} // namespace moduletest
