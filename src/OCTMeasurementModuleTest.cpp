#include "OCTMeasurementModule.h"

#include "AppBase.h"
#include "DialogDriver.h"
#include "MeasurementTestTools.h"
#include "MeasurementWidget.h"
#include "OCTManualSegmentationModule.h"
#include "OCTScanControlWidget.h"
#include "OCTSegmentationEditorWidget.h"
#include "QTableWidgetSelectedToClipboard.h"

#include <QHBoxLayout>
#include <QLabel>

#include <gmock/gmock.h>

using namespace kelp::oct;
using namespace kelp::oct::test;

namespace {

/// A study with the measured scan, chosen as the patient manager would.
class MeasurementModule : public ::testing::Test
{
protected:
    MeasurementModule() : m_patient(new Patient), m_study(new Study)
    {
        m_study->setId(QStringLiteral("study"));
        m_patient->addStudy(m_study.data(), false);
        m_measured.scan->setId(QStringLiteral("scan"));
        m_study->addData(m_measured.scan.data(), QStringLiteral("scan"), false);
        m_study->addProcessData(m_measured.segmentation.data(), QStringLiteral("seg"), false);
        AppBase::setCurrent(m_patient, m_study);
    }
    ~MeasurementModule() override { AppBase::setCurrent(nullptr, nullptr); }

    OCTMeasurementViewer& viewer() const
    {
        return *m_module.getMainWidget()->findChild<MeasurementWidget*>()->getViewer();
    }
    QString firstCell() const
    {
        return m_module.getMainWidget()
            ->findChild<QTableWidgetSelectedToClipboard*>(QStringLiteral("thicknessTable"))
            ->item(0, 0)
            ->text();
    }

    MeasuredScan m_measured;
    DataPointer<Patient> m_patient;
    DataPointer<Study> m_study;
    ActiveDataItems m_items;
    mutable OCTMeasurementModule m_module{&m_items, QStringLiteral("OCT Measurement")};
    DialogDriver m_dialogs;
};

TEST_F(MeasurementModule, HasThePanelBesideTheMeasurements)
{
    const auto* const columns = qobject_cast<QHBoxLayout*>(m_module.getMainWidget()->layout());
    ASSERT_TRUE(columns);
    ASSERT_EQ(columns->count(), 2);
    EXPECT_TRUE(qobject_cast<OCTScanControlWidget*>(columns->itemAt(0)->widget()));
    EXPECT_TRUE(qobject_cast<MeasurementWidget*>(columns->itemAt(1)->widget()));
    EXPECT_EQ(m_module.getName(), QStringLiteral("OCT Measurement"));
}

TEST_F(MeasurementModule, ShowsScanAndSegmentationAndTracesItsHooks)
{
    m_measured.addLayers();
    m_module.activate();
    const kelp::oct::test::TraceCapture trace;
    m_module.setOCTScanSegmentationPrivate(m_measured.segmentation);
    EXPECT_EQ(viewer().getOCT(), m_measured.scan);
    EXPECT_EQ(viewer().getSegmentation(), m_measured.segmentation);
    EXPECT_NE(firstCell(), QStringLiteral("-"));
    for (const char* const line :
         {"OCTMeasurementModule::setOCTScan\n", "OCTMeasurementModule::setOCTScanSegmentation\n",
          "OCTMeasurementModule::clearOCT()\n"}) {
        EXPECT_THAT(trace.text(), testing::HasSubstr(line));
    }
}

TEST_F(MeasurementModule, TracesASegmentationThatIsNullOrWithoutAScan)
{
    const kelp::oct::test::TraceCapture trace;
    m_module.setOCTScanSegmentation(nullptr);
    EXPECT_THAT(trace.text(),
                testing::HasSubstr(
                    "OCTMeasurementModule::setOCTScanSegmentation: OCT segmentation is null\n"));
    m_module.setOCTScanSegmentation(OCTScanSegPtr(new OCTScanSegmentation));
    EXPECT_THAT(trace.text(),
                testing::HasSubstr("OCTMeasurementModule::setOCTScanSegmentation: OCT is null\n"));
}

TEST_F(MeasurementModule, TellsWhenThereIsNoScanToSet)
{
    m_dialogs.expectMessageContaining(QStringLiteral("Error Setting the OCT in the viewer"),
                                      QStringLiteral("Setting the OCT failed:\n"));
    m_module.setOCTScan(nullptr);
}

TEST_F(MeasurementModule, TellsOfAMissingLayerAndStaysUsable)
{
    m_measured.addLayers({QStringLiteral("ILM"), QStringLiteral("BM")});
    m_module.activate();
    m_dialogs.expectMessageContaining(
        QStringLiteral("Error Setting the segmentation in the viewer"),
        QStringLiteral("Setting the segmentation failed:\n"));
    m_module.setOCTScanSegmentationPrivate(m_measured.segmentation);
    EXPECT_EQ(viewer().getSegmentation(), m_measured.segmentation);
    EXPECT_EQ(firstCell(), QStringLiteral("-"));
    EXPECT_EQ(visibleItems<QGraphicsPixmapItem>(viewer()).size(), 2) << "no map";
    m_module.deselectOCT();
    EXPECT_TRUE(viewer().getOCT().isNull());
}

TEST_F(MeasurementModule, TellsWhenTheScanCannotBeLoaded)
{
    const OCTScanPtr lost(new OCTScan);
    m_dialogs.expectMessageContaining(QStringLiteral("Error Loading the OCT"),
                                      QStringLiteral("Loading the OCT failed:\n"));
    m_module.setOCTScanPrivate(lost);
    EXPECT_TRUE(viewer().getOCT().isNull());
}

TEST_F(MeasurementModule, TakesTheSelectionOfTheManualTab)
{
    m_measured.addLayers();
    OCTManualSegmentationModule manual(&m_items, QStringLiteral("OCT Manual Segmentation"));
    manual.activate();
    manual.setOCTScanSegmentationPrivate(m_measured.segmentation);
    manual.deactivate();
    m_module.activate();
    EXPECT_EQ(viewer().getOCT(), m_measured.scan);
    EXPECT_EQ(viewer().getSegmentation(), m_measured.segmentation);
    EXPECT_NE(firstCell(), QStringLiteral("-"));
    m_module.deactivate();
    EXPECT_EQ(m_items.getSegmentation(), m_measured.segmentation);
    EXPECT_TRUE(viewer().getOCT().isNull());
    EXPECT_EQ(firstCell(), QStringLiteral("-"));
}

TEST_F(MeasurementModule, SaysWhatToDoWhileNoScanIsChosen)
{
    m_module.activate();
    const auto* const hint = viewer().findChild<QLabel*>(QStringLiteral("hintOverlay"));
    ASSERT_TRUE(hint);
    EXPECT_FALSE(hint->text().isEmpty());
    m_module.setOCTScanPrivate(m_measured.scan);
    EXPECT_TRUE(hint->text().isEmpty());
}

TEST_F(MeasurementModule, MeasuresAgainWhenTheMaskChanges)
{
    m_measured.addLayers();
    m_module.activate();
    m_module.setOCTScanSegmentationPrivate(m_measured.segmentation);
    const QString before = firstCell();
    m_measured.segmentation->getMask()->addPolygon(makeRectangle(0.0, 0.0, 8.0, 4.0));
    auto* const panel = m_module.getMainWidget()->findChild<OCTScanControlWidget*>();
    ASSERT_TRUE(panel);
    ASSERT_TRUE(QMetaObject::invokeMethod(panel, "maskChanged"));
    EXPECT_NE(firstCell(), before);
}

} // namespace
