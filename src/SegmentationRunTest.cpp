#include "OCTAutoSegmentationModule.h"

#include "DialogDriver.h"
#include "LayerName.h"
#include "OCTModuleTestSupport.h"
#include "SegInterface.h"
#include "SegUpdateDialog.h"
#include "kelpSettings.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMessageBox>
#include <QTextEdit>
#include <QTimerEvent>

#include <gmock/gmock.h>

#include <algorithm>

namespace moduletest {
namespace {

using kelp::oct::OCTAutoSegmentationModule;
using kelp::oct::SegUpdateDialog;
using testing::ElementsAre;
using testing::HasSubstr;

/// Measures how long the event loop is kept from its work.
class Heartbeat : public QObject
{
public:
    Heartbeat()
    {
        m_last.start();
        startTimer(5);
    }
    qint64 longestPauseMs() const { return m_longest; }

protected:
    void timerEvent(QTimerEvent*) override { m_longest = std::max(m_longest, m_last.restart()); }

private:
    QElapsedTimer m_last;
    qint64 m_longest = 0;
};

/// Runs of the automatic segmentation through the tab.
class SegmentationRun : public ModuleApplication
{
protected:
    void SetUp() override
    {
        ModuleApplication::SetUp();
        kelp::Settings::set(QStringLiteral("testSegmentationEnabled"), QVariant(true));
        m_tab = std::make_unique<OCTAutoSegmentationModule>(
            &m_items, QStringLiteral("OCT Auto-Segmentation"));
        m_tab->getMainWidget()->resize(1260, 760);
        m_tab->getMainWidget()->show();
        m_dialog = widget().findChild<SegUpdateDialog*>();
        ASSERT_TRUE(m_dialog);
    }
    void TearDown() override
    {
        m_tab.reset();
        kelp::Settings::set(QStringLiteral("testSegmentationEnabled"), QVariant(false));
        ModuleApplication::TearDown();
    }
    QWidget& widget() { return *m_tab->getMainWidget(); }
    /// Shows a new segmentation of the scan.
    void choose(const OCTScanPtr& scan)
    {
        addScan(QStringLiteral("scan1"), scan);
        m_tab->activate();
        doubleClickScan(widget(), QStringLiteral("scan1"));
        press(widget(), QStringLiteral("New Segmentation"));
        ASSERT_TRUE(QTest::qWaitFor([] { return !AppBase::hasUnsavedChanges(); }));
    }
    OCTScanSegPtr segmentation() const
    {
        QList<Data*> items;
        m_study->getAllProcessData(items);
        return dynamic_cast<kelp::oct::OCTScanSegmentation*>(items.value(0));
    }
    std::vector<std::string> layers() const
    {
        std::vector<std::string> identifiers;
        for (const kelp::oct::LayerNamePtr& name : segmentation()->getAllLayerNames()) {
            identifiers.push_back(name->getIdentifier().toStdString());
        }
        std::sort(identifiers.begin(), identifiers.end());
        return identifiers;
    }
    bool waitForLabel(const QString& text) const
    {
        return QTest::qWaitFor(
            [&] { return m_dialog->findChild<QLabel*>()->text().startsWith(text); }, longWaitMs);
    }
    std::string log() const
    {
        return m_dialog->findChild<QTextEdit*>()->toPlainText().toStdString();
    }
    void setMasks(bool etdrs, bool center)
    {
        widget().findChild<QCheckBox*>(QStringLiteral("useETDRSMask"))->setChecked(etdrs);
        widget().findChild<QCheckBox*>(QStringLiteral("useCenterMask"))->setChecked(center);
    }
    void run(const QString& button)
    {
        press(widget(), button);
        ASSERT_TRUE(waitForLabel(QStringLiteral("Segmentation success")));
        EXPECT_FALSE(m_dialog->isVisible());
    }

    /// The run's own dialog closes by itself, perhaps before it can be seen.
    static void expectRunFailure(DialogDriver& dialogs, const QString& part)
    {
        dialogs.expect([&dialogs, part](QDialog& dialog) {
            if (qobject_cast<SegUpdateDialog*>(&dialog)) {
                dialogs.expectMessageContaining(QStringLiteral("Segmentation Failure: "), part);
                return;
            }
            EXPECT_EQ(dialog.windowTitle().toStdString(), "Segmentation Failure: ");
            const auto* const box = qobject_cast<QMessageBox*>(&dialog);
            EXPECT_TRUE(box && box->text().contains(part));
            DialogDriver::click(dialog, QStringLiteral("OK"));
        });
    }

    std::unique_ptr<OCTAutoSegmentationModule> m_tab;
    SegUpdateDialog* m_dialog = nullptr;
};

TEST_F(SegmentationRun, NormalFindsSixLayersShowsThemAndSaves)
{
    choose(kelp::oct::test::Retina().makeScan());
    setMasks(false, false);
    run(QStringLiteral("Segment Normal"));
    EXPECT_THAT(layers(),
                ElementsAre("BM", "GCL", "ILM", "ILMcoarse", "INL", "ISe", "ISeCoarse", "ONL"));
    EXPECT_TRUE(segmentation()->getMask()->getPolygons().isEmpty());
    EXPECT_TRUE(findButton(widget(), QStringLiteral("Export"))->isEnabled());
    auto* const shown = widget().findChild<QCheckBox*>(QStringLiteral("ILM"));
    ASSERT_TRUE(shown);
    EXPECT_TRUE(shown->isChecked());
    EXPECT_TRUE(QTest::qWaitFor([] { return !AppBase::hasUnsavedChanges(); }));

    // What stands on the disk is the result.
    const QString stored = segmentation()->toBase64String();
    const DataPointer<Patient> patient = m_patient;
    ASSERT_EQ(DataIOManager::openStore(path(QStringLiteral("store"))).toString(), QString());
    QList<Patient*> patients;
    ASSERT_EQ(DataIOManager::getPatientList(patients).toString(), QString());
    ASSERT_EQ(patients.size(), 1);
    Study* const study = patients.first()->getStudy(QStringLiteral("Visit1"));
    ASSERT_TRUE(study);
    QList<Data*> items;
    study->getAllProcessData(items);
    ASSERT_EQ(items.size(), 1);
    EXPECT_EQ(dynamic_cast<kelp::oct::OCTScanSegmentation*>(items.first())->toBase64String(),
              stored);
}

TEST_F(SegmentationRun, DrusenFindsTheInnerBorderOfThePigmentEpitheliumToo)
{
    choose(kelp::oct::test::Retina().makeScan());
    setMasks(false, false);
    run(QStringLiteral("Segment Drusen"));
    EXPECT_THAT(layers(), ElementsAre("BM", "GCL", "ILM", "ILMcoarse", "INL", "IRPE", "ISe",
                                      "ISeCoarse", "ONL"));
    EXPECT_THAT(log(), HasSubstr("Segmentation step 5 of 5 has started"));
}

TEST_F(SegmentationRun, MouseAppliesBothMasksAndThePanelShowsThem)
{
    choose(kelp::oct::test::Retina().makeScan());
    setMasks(true, true);
    run(QStringLiteral("Segment Mouse"));
    EXPECT_EQ(segmentation()->getMask()->getPolygons().size(), 2);
    EXPECT_THAT(log(), HasSubstr("Start inner layer segmentation"));
}

TEST_F(SegmentationRun, ACircularScanIsShownAndSavedWhenItsLastStepIsOver)
{
    choose(kelp::oct::test::singleBScanRetina(QStringLiteral("Circular BScan")).makeScan());
    setMasks(true, false);
    press(widget(), QStringLiteral("Segment Normal"));
    ASSERT_TRUE(QTest::qWaitFor(
        [this] {
            return findButton(widget(), QStringLiteral("Export"))->isEnabled() &&
                   !m_dialog->isVisible();
        },
        longWaitMs));
    // Had the tab followed the early success, the inner layers would be missing.
    EXPECT_THAT(layers(),
                ElementsAre("BM", "GCL", "ILM", "ILMcoarse", "INL", "ISe", "ISeCoarse", "ONL"));
    EXPECT_TRUE(widget().findChild<QCheckBox*>(QStringLiteral("ONL")));
    EXPECT_TRUE(segmentation()->getMask()->getPolygons().isEmpty());
}

TEST_F(SegmentationRun, AnAbortIsToldOnceAndTheTabCanRunAgain)
{
    kelp::oct::test::Retina retina;
    retina.aScans = 256;
    retina.bScans = 25;
    choose(retina.makeScan());
    setMasks(false, false);
    DialogDriver dialogs;
    dialogs.expect([](QDialog& dialog) {
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
        QTest::mouseClick(dialog.findChild<QPushButton*>(), Qt::LeftButton);
    });
    dialogs.expectMessage(QStringLiteral("Segmentation Failure: "),
                          QStringLiteral("Segmentation was aborted."));
    press(widget(), QStringLiteral("Segment Normal"));
    ASSERT_TRUE(QTest::qWaitFor([&dialogs] { return dialogs.pending() == 0; }, longWaitMs));
    ASSERT_TRUE(QTest::qWaitFor([] { return !AppBase::hasUnsavedChanges(); }));
    EXPECT_FALSE(m_dialog->isVisible());
    EXPECT_TRUE(findButton(widget(), QStringLiteral("Segment Normal"))->isEnabled());
}

TEST_F(SegmentationRun, AFailureIsToldAndTheLayersThatThereAreStayShown)
{
    kelp::oct::test::Retina tiny;
    tiny.aScans = 8;
    choose(tiny.makeScan());
    segmentation()->setVolumeLayer(kelp::oct::test::constantSurface(segmentation(), 50),
                                   kelp::oct::LayerNameILM::create());
    DialogDriver dialogs;
    expectRunFailure(dialogs, QStringLiteral("The scan is too small to be segmented"));
    press(widget(), QStringLiteral("Segment Normal"));
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return findButton(widget(), QStringLiteral("Export"))->isEnabled(); },
        longWaitMs));
    EXPECT_FALSE(m_dialog->isVisible());
    EXPECT_THAT(layers(), ElementsAre("ILM"));
    EXPECT_TRUE(widget().findChild<QCheckBox*>(QStringLiteral("ILM")));
}

TEST_F(SegmentationRun, ATestTakesItsNumbersFromFourOfTheEightFields)
{
    const OCTScanPtr scan = kelp::oct::test::Retina().makeScan();
    choose(scan);
    // The masks have no effect on it.
    setMasks(true, true);
    const auto enter = [this](int field, const char* text) {
        widget()
            .findChild<QLineEdit*>(QStringLiteral("testField%1").arg(field))
            ->setText(QString::fromUtf8(text));
    };
    enter(0, "120");
    enter(1, "390.5");
    enter(6, "70");
    enter(7, "abc"); // counts as 0
    for (const int unread : {2, 3, 4, 5}) {
        enter(unread, "-1");
    }
    run(QStringLiteral("Start Segmentation Test"));
    EXPECT_THAT(log(), HasSubstr("Segmentation step 3 of 3 has started"));

    // The same numbers, handed to the steps directly.
    const OCTScanSegPtr expected(new kelp::oct::OCTScanSegmentation(scan));
    const auto axial = static_cast<float>(static_cast<float>(scan->getSliceSpacing().y) * 1000.0);
    kelp::oct::SegInterface direct;
    int successes = 0;
    QObject::connect(&direct, &kelp::oct::SegInterface::segmentationSuccess, &widget(),
                     [&successes] { ++successes; });
    direct.resetSegmentation();
    direct.segmentCoarseMinMax(expected, 120.0F / axial, 390.5F / axial);
    direct.segmentILMFine(expected, false, false);
    direct.segmentPEFineConstant(expected, 70.0F, 0.0F, 70.0F, 0.0F);
    ASSERT_TRUE(QTest::qWaitFor([&successes] { return successes == 1; }, longWaitMs));
    EXPECT_EQ(segmentation()->toBase64String(), expected->toBase64String());
    EXPECT_THAT(layers(), ElementsAre("BM", "ILM", "ILMcoarse", "ISe", "ISeCoarse"));
}

TEST_F(SegmentationRun, ATestWithoutAScanIsToldInABox)
{
    m_tab->activate();
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Segmentation Error"),
                                    QStringLiteral("OCT scan is null."));
    press(widget(), QStringLiteral("Start Segmentation Test"));
}

TEST_F(SegmentationRun, TheWindowLivesDuringARun)
{
    kelp::oct::test::Retina retina;
    retina.aScans = 128;
    retina.bScans = 9;
    choose(retina.makeScan());
    setMasks(false, false);
    const Heartbeat heartbeat;
    run(QStringLiteral("Segment Normal"));
    RecordProperty("longestPauseMs", static_cast<int>(heartbeat.longestPauseMs()));
    EXPECT_LT(heartbeat.longestPauseMs(), 400) << "ms without a chance to repaint";
}

} // namespace
} // namespace moduletest
