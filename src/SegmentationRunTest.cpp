#include "SegmentationRunFixture.h"

#include "LayerName.h"
#include "SegInterface.h"
#include "TestProcessorTime.h"
#include "Waiting.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTimerEvent>

#include <gmock/gmock.h>

#include <algorithm>

namespace moduletest {
namespace {

using kelp::test::processorSeconds;
using kelp::test::threadSeconds;
using testing::ElementsAre;
using testing::HasSubstr;

/// Measures how long the event loop is kept from its work, in processor time: on a busy machine a
/// thread stands still for a while without being kept by anything of ours.
class Heartbeat : public QObject
{
public:
    Heartbeat() { startTimer(5); }
    /// The longest time without a beat that the thread itself has worked.
    double longestWork() const { return m_longestWork; }
    /// The longest one that all threads together have worked: what the thread waits for counts too.
    double longestPause() const { return m_longestPause; }
    /// What all threads have worked so far.
    double all() const { return processorSeconds() - m_start; }

protected:
    void timerEvent(QTimerEvent*) override
    {
        const double work = threadSeconds();
        const double pause = processorSeconds();
        m_longestWork = std::max(m_longestWork, work - m_lastWork);
        m_longestPause = std::max(m_longestPause, pause - m_lastPause);
        m_lastWork = work;
        m_lastPause = pause;
    }

private:
    const double m_start = processorSeconds();
    double m_lastWork = threadSeconds();
    double m_lastPause = m_start;
    double m_longestWork = 0.0;
    double m_longestPause = 0.0;
};

/// Presses the dialog's button as soon as the dialog comes up.
class PressedAtOnce : public QObject
{
public:
    explicit PressedAtOnce(QDialog& dialog) { dialog.installEventFilter(this); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show) {
            // Before anything else that a run may have told meanwhile.
            QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
            m_dialog = static_cast<QDialog*>(watched);
        }
        return QObject::eventFilter(watched, event);
    }
    void customEvent(QEvent*) override
    {
        QTest::mouseClick(m_dialog->findChild<QPushButton*>(), Qt::LeftButton);
    }

private:
    QDialog* m_dialog = nullptr;
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
    EXPECT_TRUE(waiting::until([] { return !AppBase::hasUnsavedChanges(); }));

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
    ASSERT_TRUE(waiting::until([this] {
        return findButton(widget(), QStringLiteral("Export"))->isEnabled() &&
               !m_dialog->isVisible();
    }));
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
    const PressedAtOnce abort(*m_dialog);
    DialogDriver dialogs;
    dialogs.leaveAlone("kelp::oct::SegUpdateDialog");
    dialogs.expectMessage(QStringLiteral("Segmentation Failure: "),
                          QStringLiteral("Segmentation was aborted."));
    press(widget(), QStringLiteral("Segment Normal"));
    ASSERT_TRUE(waiting::until([&dialogs] { return dialogs.pending() == 0; }));
    ASSERT_TRUE(waiting::until([] { return !AppBase::hasUnsavedChanges(); }));
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
    ASSERT_TRUE(waiting::until(
        [this] { return findButton(widget(), QStringLiteral("Export"))->isEnabled(); }));
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
    ASSERT_TRUE(waiting::until([&successes] { return successes == 1; }));
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
    EXPECT_LT(heartbeat.longestWork(), 0.4) << "s without a chance to repaint";
    EXPECT_LT(heartbeat.longestPause(), heartbeat.all() / 2) << "s of " << heartbeat.all();
}

} // namespace
} // namespace moduletest
