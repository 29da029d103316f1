#include "RunWarnings.h"

#include "OCTModuleTestSupport.h"

namespace moduletest {
namespace {

using kelp::oct::RunWarnings;

const QStringList twoSentences{QStringLiteral("GCL: no surface found in 40 % of the A-scans"),
                               QStringLiteral("BM: at the end of its search range")};

OCTScanSegPtr newSegmentation()
{
    return kelp::oct::test::Retina().makeSegmentation();
}

TEST(RunWarnings, SayNothingWithoutASentence)
{
    RunWarnings warnings;
    EXPECT_TRUE(warnings.isEmpty());
    EXPECT_EQ(warnings.asStatusText(), QString());
    warnings.set(newSegmentation(), {});
    EXPECT_TRUE(warnings.isEmpty());
    EXPECT_EQ(warnings.asStatusText(), QString());
}

TEST(RunWarnings, AreCountedInTheStatusLineAndListedInTheNotice)
{
    RunWarnings warnings;
    warnings.set(newSegmentation(), twoSentences);
    EXPECT_EQ(warnings.asStatusText().toStdString(),
              "The segmentation has 2 warnings:\n"
              "GCL: no surface found in 40 % of the A-scans;\nBM: at the end of its search range");
    const kelp::Notice notice = warnings.asNotice();
    EXPECT_EQ(notice.title.toStdString(), "The segmentation has 2 warnings");
    EXPECT_EQ(notice.points, twoSentences);
    EXPECT_EQ(notice.advice.toStdString(),
              "Look at these B-scans before you use the numbers; you can correct them in the tab "
              "OCT Manual Segmentation.");
    warnings.set(newSegmentation(), twoSentences.mid(1));
    EXPECT_EQ(warnings.asNotice().title.toStdString(), "The segmentation has a warning");
}

TEST(RunWarnings, AreForgottenWhenAnotherSegmentationIsShown)
{
    const OCTScanSegPtr segmentation = newSegmentation();
    for (const OCTScanSegPtr& other : {newSegmentation(), OCTScanSegPtr()}) {
        RunWarnings warnings;
        warnings.set(segmentation, twoSentences);
        warnings.keepFor(segmentation);
        EXPECT_FALSE(warnings.isEmpty());
        warnings.keepFor(other);
        EXPECT_TRUE(warnings.isEmpty());
    }
}

TEST(RunWarnings, OfASegmentationThatIsGoneAreNobodys)
{
    OCTScanSegPtr segmentation = newSegmentation();
    RunWarnings warnings;
    warnings.set(segmentation, twoSentences);
    const QPointer<kelp::oct::OCTScanSegmentation> watched = segmentation.data();
    segmentation = nullptr;
    EXPECT_FALSE(watched) << "kept alive by its warnings";
    warnings.keepFor(OCTScanSegPtr());
    EXPECT_TRUE(warnings.isEmpty());
}

/// The status line of the application, with two tabs on one scan and its two segmentations.
class RunWarningsInTabs : public ModuleApplication
{
protected:
    void SetUp() override
    {
        ModuleApplication::SetUp();
        const OCTScanPtr scan = addScan(QStringLiteral("scan1"));
        addSegmentation(QStringLiteral("seg1"), scan);
        addSegmentation(QStringLiteral("seg2"), scan);
        m_first = std::make_unique<RecordingTab>(m_items);
        m_second = std::make_unique<RecordingTab>(m_items);
        m_first->activate();
        doubleClickScan(*m_first->getMainWidget(), QStringLiteral("scan1"));
        clickSegmentation(*m_first->getMainWidget(), QStringLiteral("seg1"));
        m_items.runWarnings().set(m_first->segmentation(), twoSentences);
        goTo(*m_first, *m_second);
        ASSERT_EQ(statusLine(), m_items.runWarnings().asStatusText());
        ASSERT_NE(statusLine(), QString());
    }
    void TearDown() override
    {
        m_second.reset();
        m_first.reset();
        ModuleApplication::TearDown();
    }
    static void goTo(RecordingTab& left, RecordingTab& entered)
    {
        left.deactivate();
        entered.activate();
    }
    static QString statusLine()
    {
        return AppBase::getMainForm()->findChild<QLabel*>(QStringLiteral("noticeLabel"))->toolTip();
    }

    std::unique_ptr<RecordingTab> m_first;
    std::unique_ptr<RecordingTab> m_second;
};

TEST_F(RunWarningsInTabs, FollowTheUserFromTabToTab)
{
    goTo(*m_second, *m_first);
    EXPECT_EQ(statusLine(), m_items.runWarnings().asStatusText());
    EXPECT_NE(statusLine(), QString());
}

TEST_F(RunWarningsInTabs, GoWhenAnotherSegmentationIsChosen)
{
    clickSegmentation(*m_second->getMainWidget(), QStringLiteral("seg2"));
    EXPECT_EQ(statusLine(), QString());
    clickSegmentation(*m_second->getMainWidget(), QStringLiteral("seg1"));
    EXPECT_EQ(statusLine(), QString());
}

TEST_F(RunWarningsInTabs, GoWithTheScan)
{
    doubleClickScan(*m_second->getMainWidget(), QStringLiteral("scan1"));
    EXPECT_EQ(statusLine(), QString());
}

TEST_F(RunWarningsInTabs, GoWithTheDeletedSegmentation)
{
    m_second->deleteSegment(m_second->segmentation());
    EXPECT_EQ(statusLine(), QString());
}

TEST_F(RunWarningsInTabs, GoWithTheStudy)
{
    const DataPointer<Study> other = addStudy(QStringLiteral("Visit2"));
    AppBase::setCurrent(m_patient, other);
    EXPECT_EQ(statusLine(), QString());
    goTo(*m_second, *m_first);
    EXPECT_EQ(statusLine(), QString());
    EXPECT_TRUE(m_items.runWarnings().isEmpty());
}

} // namespace
} // namespace moduletest
