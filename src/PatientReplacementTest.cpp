#include "DialogDriver.h"
#include "ExchangeScanSupport.h"
#include "OCTManualSegmentationModule.h"
#include "OCTMeasurementModule.h"
#include "OCTModuleTestSupport.h"
#include "PatientExchange.h"
#include "QtPMModule.h"

#include <QPointer>
#include <QTreeView>

namespace moduletest {
namespace {

using kelp::oct::OCTScanSegmentation;

/// A true tab that tells what it works on.
template <typename Tab>
class OpenTab : public Tab
{
public:
    using Tab::Tab;
    OCTScanPtr scan() const { return this->m_octScan; }
    OCTScanSegPtr segmentation() const { return this->m_octScanSegmentation; }
};

/// A patient that was exported is imported again in place of itself while a tab knows its scan.
class PatientReplacementTest : public ModuleApplication
{
protected:
    void SetUp() override
    {
        ModuleApplication::SetUp();
        exchangetest::registerScans();
        const OCTScanPtr scan = addScan(QStringLiteral("scan1"),
                                        exchangetest::importScan(path(QStringLiteral("camera"))));
        scan->ensureLoaded();
        const OCTScanSegPtr segmentation = exchangetest::makeSegmentation(scan);
        int row = 2;
        for (const kelp::oct::LayerNamePtr& name : kelp::oct::LayerNameRegistry::entries()) {
            segmentation->setVolumeLayer(
                kelp::oct::test::makeFlatSurface(exchangetest::bScans, exchangetest::aScans, row++),
                name);
        }
        ASSERT_EQ(
            m_study->addProcessData(segmentation.data(), QStringLiteral("seg1"), false).toString(),
            QString());
        ASSERT_EQ(DataIOManager::storePatient(m_patient).toString(), QString());
        m_formerScan = scan.data();
        m_exported =
            kelp::exchange::exportPatients({m_patient}, m_folder.path(), kelp::exchange::Progress())
                .folder;
        m_manager.getMainWidget()->show();
        m_dialogs.leaveAlone("QProgressDialog");
    }

    template <typename Tab>
    void showInTab(Tab& tab)
    {
        tab.getMainWidget()->show();
        tab.activate();
        doubleClickScan(*tab.getMainWidget(), QStringLiteral("scan1"));
        clickSegmentation(*tab.getMainWidget(), QStringLiteral("seg1"));
        m_formerSegmentation = tab.segmentation().data();
        ASSERT_FALSE(m_formerSegmentation.isNull());
        tab.deactivate();
    }

    void replaceInManager()
    {
        m_manager.activate();
        auto& list =
            *m_manager.getMainWidget()->findChild<QTreeView*>(QStringLiteral("patientList"));
        QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                          list.visualRect(list.model()->index(0, 0)).center());
        ASSERT_EQ(AppBase::getCurrentStudy(), m_study);
        m_study = nullptr;
        m_dialogs.expectFileDialog(m_exported);
        m_dialogs.expectMessageContaining(QStringLiteral("Import"), QStringLiteral("is here"),
                                          QStringLiteral("Replace"));
        m_dialogs.expectMessageContaining(QStringLiteral("Import"),
                                          QStringLiteral("Replaced: Ada"));
        auto* const import =
            m_manager.getMainWidget()->findChild<QPushButton*>(QStringLiteral("importButton"));
        QTest::mouseClick(import, Qt::LeftButton);
        m_manager.deactivate();
        m_study = AppBase::getCurrentStudy();
        ASSERT_FALSE(m_study.isNull());
    }

    static kelp::oct::OCTScanControlWidget& panelOf(kelp::oct::OCTModule& tab)
    {
        return *tab.getMainWidget()->findChild<kelp::oct::OCTScanControlWidget*>();
    }

    OCTScanPtr ownScan() const
    {
        QList<Data*> items;
        m_study->getAllData(items);
        return qobject_cast<OCTScan*>(items.value(0));
    }
    OCTScanSegPtr ownSegmentation() const
    {
        QList<Data*> items;
        m_study->getAllProcessData(items);
        return qobject_cast<OCTScanSegmentation*>(items.value(0));
    }

    template <typename Tab>
    void expectNewItemsOnlyIn()
    {
        OpenTab<Tab> tab(&m_items, QStringLiteral("Tab"));
        showInTab(tab);
        replaceInManager();
        tab.activate();
        EXPECT_EQ(tab.scan(), ownScan());
        EXPECT_EQ(panelOf(tab).getOCT(), ownScan());
        EXPECT_EQ(tab.segmentation(), ownSegmentation());
        tab.deactivate();
        EXPECT_TRUE(m_formerScan.isNull()) << "no view holds on to the former scan";
        EXPECT_TRUE(m_formerSegmentation.isNull());
    }

    QtPMModule m_manager;
    DialogDriver m_dialogs;
    QString m_exported;
    QPointer<OCTScan> m_formerScan;
    QPointer<OCTScanSegmentation> m_formerSegmentation;
};

TEST_F(PatientReplacementTest, TheEditorGoesOnWithTheNewScanAndSegmentation)
{
    expectNewItemsOnlyIn<kelp::oct::OCTManualSegmentationModule>();
}

TEST_F(PatientReplacementTest, TheMeasurementGoesOnWithTheNewScanAndSegmentation)
{
    expectNewItemsOnlyIn<kelp::oct::OCTMeasurementModule>();
}

TEST_F(PatientReplacementTest, WhatIsChangedAfterwardsIsStored)
{
    RecordingTab tab(m_items);
    showInTab(tab);
    replaceInManager();
    tab.activate();
    ASSERT_TRUE(tab.segmentation());
    kelp::oct::FoveaPosition fovea;
    fovea.position.x = 1.5;
    fovea.isSet = true;
    tab.segmentation()->setFoveaPosition(fovea);
    AppBase::markCurrentChanged();
    EXPECT_TRUE(AppBase::saveChanges());
    tab.deactivate();
    DataIOManager::closeStore();
    ASSERT_EQ(DataIOManager::openStore(path(QStringLiteral("store"))).toString(), QString());
    QList<Patient*> patients;
    DataIOManager::getPatientList(patients);
    ASSERT_EQ(patients.size(), 1);
    m_study = patients.front()->getStudy(QStringLiteral("Visit1"));
    const OCTScanSegPtr stored = ownSegmentation();
    ASSERT_TRUE(stored);
    stored->ensureDecoded();
    EXPECT_TRUE(stored->getFoveaPosition().isSet);
    EXPECT_EQ(stored->getFoveaPosition().position.x, 1.5);
}

} // namespace
} // namespace moduletest
