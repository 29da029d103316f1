#include "SegUpdateDialog.h"

#include "TestRetina.h"
#include "TestRunRecorder.h"
#include "TraceCapture.h"
#include "Waiting.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QLabel>
#include <QLayout>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>

#include <gmock/gmock.h>

#include <algorithm>

namespace kelp::oct {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// Writes down what a label shows each time it is painted.
class PaintedTexts : public QObject
{
public:
    explicit PaintedTexts(QLabel& label) : m_label(label) { label.installEventFilter(this); }
    const QStringList& texts() const { return m_texts; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            m_texts.append(m_label.text());
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QLabel& m_label;
    QStringList m_texts;
};

/// Measures from the moment at which a run fails. Connected before the dialog, it hears of that
/// first.
class FailureClock : public QObject
{
public:
    explicit FailureClock(const SegInterface& segInterface)
    {
        connect(&segInterface, &SegInterface::segmentationFailure, this,
                [this] { m_sinceFailure.start(); });
    }
    qint64 elapsedMs() const { return m_sinceFailure.elapsed(); }

private:
    QElapsedTimer m_sinceFailure;
};

struct UpdateDialog : testing::Test
{
    QSharedPointer<SegInterface> segInterface = QSharedPointer<SegInterface>::create();
    test::RunRecorder recorder{*segInterface};
    const FailureClock clock{*segInterface};
    SegUpdateDialog dialog{segInterface, nullptr};
    QLabel* label = dialog.findChild<QLabel*>();
    QTextEdit* log = dialog.findChild<QTextEdit*>();
    QProgressBar* bar = dialog.findChild<QProgressBar*>();
    QPushButton* abortButton = dialog.findChild<QPushButton*>();
    OCTScanSegPtr segmentation = test::Retina().makeSegmentation();

    std::string labelText() const { return label->text().toStdString(); }
    std::string logText() const { return log->toPlainText().toStdString(); }

    bool waitFor(const std::string& event, int times = 1) const
    {
        return waiting::until([&] { return recorder.count(event) >= times; });
    }
    void queueCoarseSteps(int count)
    {
        segInterface->resetSegmentation();
        for (int step = 0; step < count; ++step) {
            segInterface->segmentCoarse(segmentation);
        }
    }
    /// A run that takes long enough to be stopped, with the dialog on the screen.
    void startLongRun()
    {
        queueCoarseSteps(2000);
        ASSERT_TRUE(waitFor("started"));
        ASSERT_TRUE(waiting::untilExposed(dialog));
        ASSERT_EQ(labelText(), "Segmenting...");
    }
    void expectAborted(qint64 milliseconds) const
    {
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(labelText(), "Segmentation failed:\nSegmentation was aborted.");
        // One second for the failure, and half a second more in the abort.
        EXPECT_GE(milliseconds, 1500);
        EXPECT_THAT(recorder.failures(), ElementsAre("Segmentation was aborted."));
        EXPECT_EQ(recorder.count("success"), 0);
    }
};

TEST_F(UpdateDialog, IsModalAndHoldsLabelLogBarAndButtonInThisOrder)
{
    EXPECT_TRUE(dialog.isModal());
    ASSERT_EQ(dialog.layout()->count(), 4);
    EXPECT_EQ(dialog.layout()->itemAt(0)->widget(), label);
    EXPECT_EQ(dialog.layout()->itemAt(1)->widget(), log);
    EXPECT_EQ(dialog.layout()->itemAt(2)->widget(), bar);
    EXPECT_EQ(dialog.layout()->itemAt(3)->widget(), abortButton);
    EXPECT_EQ(log->minimumSize(), QSize(400, 300));
    EXPECT_EQ(log->maximumSize(), QSize(400, 300));
    EXPECT_TRUE(log->isReadOnly());
    EXPECT_EQ(bar->minimum(), 0);
    EXPECT_EQ(bar->maximum(), 100);
    EXPECT_EQ(bar->value(), 0);
    EXPECT_EQ(abortButton->text().toStdString(), "Abort Segmentation");
}

TEST_F(UpdateDialog, ShowsARunAndHidesAtItsSuccess)
{
    log->append(QStringLiteral("of the run before"));
    const test::TraceCapture traces;
    queueCoarseSteps(3);
    EXPECT_FALSE(dialog.isVisible());
    ASSERT_TRUE(waitFor("success"));
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(labelText(), "Segmentation success");
    EXPECT_EQ(bar->value(), 100);
    EXPECT_THAT(logText(),
                AllOf(StartsWith("Segmentation started\n"), HasSubstr("Start coarse segmentation"),
                      HasSubstr("Segmentation step 1 of 3 has finished"),
                      HasSubstr("Segmentation step 3 of 3 has started")));
    const QString prefix =
        QStringLiteral("OCTScan/src/view/SegUpdateDialog::kelp::oct::SegUpdateDialog::"
                       "segmentationSuccess: ");
    EXPECT_TRUE(traces.lines().contains(prefix + QStringLiteral("s u c c e s s")))
        << traces.lines().join('\n').toStdString();
    EXPECT_TRUE(traces.lines().contains(prefix + QStringLiteral("close")));
}

TEST_F(UpdateDialog, ShowsEveryProgressOfTheRun)
{
    QVector<int> shown;
    const QObject context;
    QObject::connect(bar, &QProgressBar::valueChanged, &context,
                     [&shown](int value) { shown.append(value); });
    queueCoarseSteps(4);
    ASSERT_TRUE(waitFor("success"));
    EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
    EXPECT_THAT(shown, AllOf(Contains(25), Contains(50), Contains(75), Contains(100)));
}

TEST_F(UpdateDialog, ShowsAFailureForASecondBeforeItCloses)
{
    const PaintedTexts painted(*label);
    // On the screen beforehand: on a busy machine the run may fail before a window is up.
    dialog.show();
    ASSERT_TRUE(waiting::untilExposed(dialog));
    queueCoarseSteps(1);
    segInterface->segmentILMFine(OCTScanSegPtr(), false, false);
    ASSERT_TRUE(waiting::until([this] { return recorder.failures().size() == 1; }));
    EXPECT_GE(clock.elapsedMs(), 1000);
    EXPECT_EQ(recorder.count("started"), 1);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(labelText(), "Segmentation failed:\n" + recorder.failures().front());
    EXPECT_THAT(labelText(), HasSubstr("OCT segmentation is null."));
    // The text was on the screen while nothing else could happen.
    ASSERT_FALSE(painted.texts().isEmpty());
    EXPECT_EQ(painted.texts().last(), label->text());
}

TEST_F(UpdateDialog, TheButtonAbortsTheRun)
{
    startLongRun();
    const PaintedTexts painted(*label);
    QElapsedTimer timer;
    timer.start();
    QTest::mouseClick(abortButton, Qt::LeftButton);
    expectAborted(timer.elapsed());
    EXPECT_TRUE(painted.texts().contains(QStringLiteral("Aborting segmentation")));
    // The steps still queued fall through, each with its line.
    EXPECT_TRUE(waitFor("status: Aborting segmentation", 3));
}

TEST_F(UpdateDialog, TheEscapeKeyAbortsTheRun)
{
    startLongRun();
    QElapsedTimer timer;
    timer.start();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    expectAborted(timer.elapsed());
}

TEST_F(UpdateDialog, TheWindowsButtonAbortsTheRun)
{
    startLongRun();
    QElapsedTimer timer;
    timer.start();
    dialog.close();
    expectAborted(timer.elapsed());
}

TEST_F(UpdateDialog, ClosesWithoutAnAbortWhenNothingRuns)
{
    queueCoarseSteps(1);
    ASSERT_TRUE(waitFor("success"));
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_THAT(recorder.failures(), IsEmpty());
}

TEST_F(UpdateDialog, CanRunAgainAfterAnAbort)
{
    startLongRun();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    recorder.clear();
    queueCoarseSteps(2);
    ASSERT_TRUE(waitFor("success"));
    EXPECT_EQ(labelText(), "Segmentation success");
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_THAT(recorder.failures(), IsEmpty());
}

TEST_F(UpdateDialog, ComesUpAgainForEachStartOfACircularScansChain)
{
    segmentation = test::singleBScanRetina(QStringLiteral("Circular BScan")).makeSegmentation();
    segInterface->resetSegmentation();
    segInterface->segmentCoarse(segmentation);
    segInterface->segmentILMFine(segmentation, false, false);
    segInterface->segmentRPEHumanHealthy(segmentation);
    segInterface->segmentInnerHumanHealthy(segmentation);
    ASSERT_TRUE(waitFor("success", 3));
    EXPECT_EQ(recorder.count("started"), 2);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_THAT(logText(), AllOf(StartsWith("Segmentation started\n"),
                                 HasSubstr("Start human healthy inner layer segmentation")));
}

TEST_F(UpdateDialog, ListensToItsNewInterfaceOnly)
{
    const auto other = QSharedPointer<SegInterface>::create();
    dialog.setSegInterface(other);
    emit segInterface->statusChanged(QStringLiteral("from the former"));
    emit segInterface->segmentationStarted();
    EXPECT_FALSE(dialog.isVisible());
    emit other->statusChanged(QStringLiteral("from the new one"));
    emit other->segmentationProgress(42);
    EXPECT_EQ(logText(), "from the new one");
    EXPECT_EQ(bar->value(), 42);
}

} // namespace
} // namespace kelp::oct
