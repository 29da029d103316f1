#include "SegmentationRunFixture.h"

#include "NoticeBar.h"
#include "Phantom.h"
#include "TraceCapture.h"
#include "Waiting.h"

#include <QScrollArea>
#include <QScrollBar>

#include <gmock/gmock.h>

namespace moduletest {
namespace {

using kelp::NoticeBar;
using testing::Contains;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;

/// So few rows that the deep surfaces are below the image: the cuts find no place for them.
kelp::oct::test::Retina cutOffRetina()
{
    kelp::oct::test::Retina retina;
    retina.rows = 64;
    return retina;
}

/// What a run through the tab says of its own result, in the window of the application.
class SegmentationNotice : public SegmentationRun
{
protected:
    void SetUp() override
    {
        m_testOptions = false;
        SegmentationRun::SetUp();
        setMasks(false, false);
    }
    NoticeBar& notice() { return *widget().findChild<NoticeBar*>(); }
    /// Behind the advice.
    QStringList points()
    {
        return notice().accessibleDescription().split(QLatin1Char('\n')).mid(1);
    }
    static QString statusLine()
    {
        return AppBase::getMainForm()->findChild<QLabel*>(QStringLiteral("noticeLabel"))->toolTip();
    }
    /// A segmentation of a scan that is cut off, and its run.
    void runWithWarnings(const QString& button = QStringLiteral("Segment Normal"))
    {
        choose(cutOffRetina().makeScan());
        run(button);
        ASSERT_TRUE(notice().isVisible());
        ASSERT_NE(statusLine(), QString());
    }
};

TEST_F(SegmentationNotice, AGoodRunSaysNothing)
{
    kelp::phantom::Options options;
    options.aScans = 96;
    options.rows = 160;
    options.bScans = 5;
    options.localizerSize = 64;
    const kelp::phantom::Export eye =
        kelp::phantom::writeExport(path(QStringLiteral("eye")), options);
    choose(kelp::oct::test::makeTestExportScan(eye.xmlPath, eye.seriesId));
    run(QStringLiteral("Segment Normal"));
    EXPECT_THAT(layers(), Contains("ONL"));
    EXPECT_FALSE(notice().isVisible()) << notice().accessibleDescription().toStdString();
    EXPECT_EQ(statusLine(), QString());
}

TEST_F(SegmentationNotice, SurfacesThatWereNotFoundAreToldAndStoredAllTheSame)
{
    const kelp::oct::test::TraceCapture traces;
    runWithWarnings();
    ASSERT_FALSE(points().isEmpty());
    EXPECT_THAT(points().first().toStdString(), HasSubstr("no surface found in 100 %"));
    EXPECT_THAT(notice().accessibleDescription().toStdString(),
                StartsWith("Look at these B-scans before you use the numbers; you can correct "
                           "them in the tab OCT Manual Segmentation.\n"));
    for (const QString& point : points()) {
        EXPECT_TRUE(statusLine().contains(point)) << point.toStdString();
        EXPECT_TRUE(traces.lines().contains(
            QStringLiteral("OCTAutoSegmentationModule::segmentationSuccess: warning: ") + point));
    }
    EXPECT_THAT(layers(), IsSupersetOf({"BM", "GCL", "ILM", "INL", "ISe", "ONL"}));
    const QString result = segmentation()->toBase64String();
    ASSERT_TRUE(waiting::until([] { return !AppBase::hasUnsavedChanges(); }));
    ASSERT_EQ(DataIOManager::openStore(path(QStringLiteral("store"))).toString(), QString());
    QList<Patient*> patients;
    ASSERT_EQ(DataIOManager::getPatientList(patients).toString(), QString());
    QList<Data*> items;
    patients.first()->getStudy(QStringLiteral("Visit1"))->getAllProcessData(items);
    ASSERT_EQ(items.size(), 1);
    EXPECT_EQ(dynamic_cast<kelp::oct::OCTScanSegmentation*>(items.first())->toBase64String(),
              result);
}

TEST_F(SegmentationNotice, StandsAboveTheBScanWithoutMakingTheTabLarger)
{
    // The page of a tab in a window of 1280 x 800 pixels.
    QScrollArea page;
    page.setWidgetResizable(true);
    page.setFrameShape(QFrame::NoFrame);
    page.setWidget(&widget());
    page.resize(1280, 716);
    page.show();
    runWithWarnings();
    auto* const viewer = widget().findChild<QWidget*>(QStringLiteral("segmentationViewer"));
    ASSERT_TRUE(viewer);
    EXPECT_TRUE(waiting::until([&page] { return page.verticalScrollBar()->maximum() == 0; }))
        << widget().height();
    EXPECT_LE(notice().geometry().bottom(), viewer->geometry().top());
    EXPECT_GT(viewer->height(), 2 * notice().height());
    const int leastWithNotice = viewer->minimumHeight();
    notice().hide();
    EXPECT_GT(viewer->minimumHeight(), leastWithNotice);
    page.takeWidget()->setParent(nullptr);
}

TEST_F(SegmentationNotice, CanBeReadWholeWithLargeFonts)
{
    runWithWarnings();
    QFont large = widget().font();
    large.setPointSize(2 * large.pointSize());
    notice().setFont(large);
    const auto* const text = notice().findChild<QLabel*>(QStringLiteral("noticeText"));
    const auto* const room = notice().findChild<QScrollArea*>();
    // What there is no room for can be reached by scrolling.
    EXPECT_TRUE(waiting::until([text, room] {
        return text->height() == text->heightForWidth(text->width()) &&
               text->height() == room->viewport()->height() + room->verticalScrollBar()->maximum();
    })) << text->height()
        << " in " << room->viewport()->height();
    EXPECT_EQ(text->fontMetrics().height(), QFontMetrics(large).height());
}

TEST_F(SegmentationNotice, IsClosedByItsButtonWhileTheStatusLineStays)
{
    runWithWarnings();
    press(notice(), QStringLiteral("Close"));
    EXPECT_FALSE(notice().isVisible());
    EXPECT_NE(statusLine(), QString());
    m_tab->deactivate();
    m_tab->activate();
    EXPECT_FALSE(notice().isVisible()) << "a visit to another tab opened it again";
    EXPECT_NE(statusLine(), QString());
}

TEST_F(SegmentationNotice, IsClosedWithEscape)
{
    runWithWarnings();
    QApplication::setActiveWindow(&widget());
    QTest::keyClick(findButton(widget(), QStringLiteral("Segment Normal")), Qt::Key_Escape);
    EXPECT_FALSE(notice().isVisible());
}

TEST_F(SegmentationNotice, IsStillThereAfterAVisitToAnotherTab)
{
    runWithWarnings();
    m_tab->deactivate();
    m_tab->activate();
    EXPECT_TRUE(notice().isVisible());
    EXPECT_NE(statusLine(), QString());
}

TEST_F(SegmentationNotice, GoesWhenTheNextRunStartsAndSaysWhatThatRunSays)
{
    runWithWarnings();
    press(widget(), QStringLiteral("Segment Normal"));
    EXPECT_FALSE(notice().isVisible());
    EXPECT_EQ(statusLine(), QString());
    ASSERT_TRUE(waiting::until([this] { return notice().isVisible(); }));
    EXPECT_NE(statusLine(), QString());
}

TEST_F(SegmentationNotice, GoesWithTheScan)
{
    addScan(QStringLiteral("scan2"));
    runWithWarnings();
    doubleClickScan(widget(), QStringLiteral("scan2"));
    EXPECT_FALSE(notice().isVisible());
    EXPECT_EQ(statusLine(), QString());
}

TEST_F(SegmentationNotice, GoesWithTheSegmentation)
{
    runWithWarnings();
    press(widget(), QStringLiteral("New Segmentation"));
    EXPECT_FALSE(notice().isVisible());
    EXPECT_EQ(statusLine(), QString());
}

TEST_F(SegmentationNotice, AFailedRunHasItsOwnMessageOnly)
{
    runWithWarnings();
    kelp::oct::test::Retina tiny;
    tiny.aScans = 8;
    addScan(QStringLiteral("tiny"), tiny.makeScan());
    m_tab->deactivate();
    m_tab->activate();
    doubleClickScan(widget(), QStringLiteral("tiny"));
    press(widget(), QStringLiteral("New Segmentation"));
    DialogDriver dialogs;
    expectRunFailure(dialogs, QStringLiteral("The scan is too small to be segmented"));
    press(widget(), QStringLiteral("Segment Normal"));
    ASSERT_TRUE(waiting::until([&dialogs] { return dialogs.pending() == 0; }));
    EXPECT_FALSE(notice().isVisible());
    EXPECT_EQ(statusLine(), QString());
}

TEST_F(SegmentationNotice, ACircularScanIsToldOnceItsLastStepIsOver)
{
    kelp::oct::test::Retina circle =
        kelp::oct::test::singleBScanRetina(QStringLiteral("Circular BScan"));
    circle.rows = cutOffRetina().rows;
    choose(circle.makeScan());
    const kelp::oct::test::TraceCapture traces;
    press(widget(), QStringLiteral("Segment Normal"));
    ASSERT_TRUE(waiting::until([this] { return notice().isVisible(); }));
    EXPECT_THAT(layers(), Contains("ONL")) << "told before the last step";
    const int told = traces.lines().filter(QStringLiteral("segmentationSuccess: warning")).size();
    EXPECT_EQ(told, points().size()) << "told again at each of the successes";
}

} // namespace
} // namespace moduletest
