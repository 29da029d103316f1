#include "ModuleSwitcher.h"

#include "DialogDriver.h"
#include "FrameTestSupport.h"
#include "Waiting.h"
#include "kelpException.h"

#include <QSignalSpy>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

using frametest::RecordingModule;
using kelp::ModuleSwitcher;

namespace {

class Switcher : public ::testing::Test
{
protected:
    void addModules(const QStringList& names)
    {
        for (const QString& name : names) {
            ASSERT_TRUE(m_switcher.add(new RecordingModule(name, m_record)));
        }
    }

    /// The tabs in a window, as a user sees them.
    QTabWidget* showTabs()
    {
        auto selector = std::make_unique<QtModuleTabSelector>(2, true, false, true, true);
        auto* const tabs = qobject_cast<QTabWidget*>(selector->getWidget());
        m_switcher.setSelector(std::move(selector));
        tabs->resize(500, 300);
        tabs->show();
        return tabs;
    }

    static void clickTab(const QTabWidget& tabs, int index)
    {
        QTest::mouseClick(tabs.tabBar(), Qt::LeftButton, {},
                          tabs.tabBar()->tabRect(index).center());
    }

    QStringList m_record;
    ModuleSwitcher m_switcher;
};

TEST_F(Switcher, RefusesNullAndNamesThatAreTaken)
{
    EXPECT_FALSE(m_switcher.add(nullptr));
    auto* const module = new RecordingModule(QStringLiteral("A"), m_record);
    EXPECT_TRUE(m_switcher.add(module));
    EXPECT_FALSE(m_switcher.add(module));
    EXPECT_EQ(m_record, QStringList());
    EXPECT_FALSE(m_switcher.add(new RecordingModule(QStringLiteral("A"), m_record)));
    EXPECT_EQ(m_record, QStringList{QStringLiteral("delete A")});
    EXPECT_EQ(m_switcher.names(), QStringList{QStringLiteral("A")});
}

TEST_F(Switcher, LeavesTheOldModuleBeforeItEntersTheNewOne)
{
    addModules({QStringLiteral("A"), QStringLiteral("B")});
    m_switcher.enter(0);
    EXPECT_EQ(m_record, QStringList{QStringLiteral("activate A")});
    QSignalSpy left(&m_switcher, SIGNAL(left()));
    m_switcher.enter(1);
    EXPECT_EQ(m_record, (QStringList{QStringLiteral("activate A"), QStringLiteral("deactivate A"),
                                     QStringLiteral("activate B")}));
    EXPECT_EQ(left.count(), 1);
    EXPECT_EQ(m_switcher.current(), 1);
}

TEST_F(Switcher, TheOpenModuleAndAnUnknownIndexChangeNothing)
{
    addModules({QStringLiteral("A")});
    m_switcher.enter(0);
    for (const int index : {0, -1, 1, 17}) {
        m_switcher.enter(index);
    }
    EXPECT_EQ(m_record, QStringList{QStringLiteral("activate A")});
    EXPECT_EQ(m_switcher.current(), 0);
}

TEST_F(Switcher, AClickOnATabEntersItsModule)
{
    addModules({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
    const QTabWidget* const tabs = showTabs();
    ASSERT_EQ(tabs->count(), 3);
    EXPECT_EQ(tabs->tabText(2), QStringLiteral("C"));
    m_switcher.enter(0);
    clickTab(*tabs, 2);
    EXPECT_EQ(m_record.mid(1),
              (QStringList{QStringLiteral("deactivate A"), QStringLiteral("activate C")}));
    EXPECT_EQ(tabs->currentIndex(), 2);
    clickTab(*tabs, 2);
    EXPECT_EQ(m_record.size(), 3);
}

TEST_F(Switcher, ModulesAddedAfterTheSelectorGetTheirTabsToo)
{
    addModules({QStringLiteral("A")});
    const QTabWidget* const tabs = showTabs();
    addModules({QStringLiteral("B")});
    ASSERT_EQ(tabs->count(), 2);
    EXPECT_EQ(tabs->tabText(1), QStringLiteral("B"));
    EXPECT_EQ(m_record, QStringList());
    m_switcher.enter(1);
    EXPECT_EQ(tabs->currentIndex(), 1);
}

TEST_F(Switcher, TheTabOfAClosedSelectorTabComesBackWhenItsModuleIsEntered)
{
    auto selector = std::make_unique<QtModuleTabSelector>(2, true, true, true, true);
    auto* const tabs = qobject_cast<QTabWidget*>(selector->getWidget());
    m_switcher.setSelector(std::move(selector));
    addModules({QStringLiteral("A"), QStringLiteral("B")});
    m_switcher.enter(0);
    emit tabs->tabCloseRequested(1);
    EXPECT_FALSE(tabs->isTabVisible(1));
    m_switcher.enter(1);
    EXPECT_TRUE(tabs->isTabVisible(1));
    EXPECT_EQ(tabs->currentIndex(), 1);
}

/// A tab whose activate and deactivate throw.
class FailingModule : public RecordingModule
{
public:
    using RecordingModule::RecordingModule;
    void activate() override
    {
        RecordingModule::activate();
        throw kelp::IOFailure("no scan");
    }
    void deactivate() override
    {
        RecordingModule::deactivate();
        throw kelp::IOFailure("still no scan");
    }
};

TEST_F(Switcher, AModuleThatFailsIsToldAndLeftAllTheSame)
{
    addModules({QStringLiteral("A")});
    ASSERT_TRUE(m_switcher.add(new FailingModule(QStringLiteral("Bad"), m_record)));
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Error"), QStringLiteral("\nno scan"));
    m_switcher.enter(1);
    EXPECT_EQ(m_switcher.current(), 1);
    dialogs.expectMessageContaining(QStringLiteral("Error"), QStringLiteral("still no scan"));
    m_switcher.enter(0);
    EXPECT_EQ(m_switcher.current(), 0);
    EXPECT_EQ(m_record.last(), QStringLiteral("activate A"));
}

TEST_F(Switcher, ModulesGoInReverseOrderAndTheirWidgetsOnce)
{
    QStringList record;
    QPointer<QTabWidget> tabs;
    {
        ModuleSwitcher switcher;
        auto selector = std::make_unique<QtModuleTabSelector>(2, true, false, true, true);
        tabs = qobject_cast<QTabWidget*>(selector->getWidget());
        switcher.setSelector(std::move(selector));
        for (const char* const name : {"A", "B"}) {
            switcher.add(new RecordingModule(QString::fromLatin1(name), record));
        }
        switcher.enter(0);
    }
    EXPECT_EQ(record, (QStringList{QStringLiteral("activate A"), QStringLiteral("delete B"),
                                   QStringLiteral("delete A")}));
    EXPECT_FALSE(tabs);
}

TEST(ModuleTabSelector, StandsWhereItIsToldAndScrollsItsTabs)
{
    QtModuleTabSelector selector(2, true, false, true, true);
    const auto* const tabs = qobject_cast<QTabWidget*>(selector.getWidget());
    ASSERT_TRUE(tabs);
    EXPECT_EQ(selector.getPosition(), QtModuleSelector::Top);
    EXPECT_EQ(tabs->tabPosition(), QTabWidget::North);
    EXPECT_FALSE(tabs->tabsClosable());
    EXPECT_TRUE(tabs->usesScrollButtons());
}

TEST(ModuleTabSelector, ADisabledModuleStaysVisibleOrGoesAsItIsTold)
{
    QStringList record;
    for (const bool showDisabled : {true, false}) {
        QtModuleTabSelector selector(3, true, false, showDisabled, false);
        RecordingModule first(QStringLiteral("A"), record);
        RecordingModule second(QStringLiteral("B"), record);
        selector.setModule(0, &first);
        selector.addModule(first.getName(), 0);
        selector.setModule(1, &second);
        selector.addModule(second.getName(), 1);
        const auto* const tabs = qobject_cast<QTabWidget*>(selector.getWidget());
        selector.moduleDisabled(second.getName(), 1);
        EXPECT_FALSE(tabs->isTabEnabled(1));
        EXPECT_EQ(tabs->isTabVisible(1), showDisabled);
        selector.moduleEnabled(second.getName(), 1);
        EXPECT_TRUE(tabs->isTabEnabled(1));
        EXPECT_TRUE(tabs->isTabVisible(1));
    }
}

TEST(ModuleTabSelector, TabsThatAreNotSelectableIgnoreTheMouse)
{
    QStringList record;
    QtModuleTabSelector selector(2, false, false, true, true);
    RecordingModule first(QStringLiteral("A"), record);
    RecordingModule second(QStringLiteral("B"), record);
    selector.setModule(0, &first);
    selector.setModule(1, &second);
    QSignalSpy selected(&selector, SIGNAL(moduleSelected(int)));
    auto* const tabs = qobject_cast<QTabWidget*>(selector.getWidget());
    tabs->show();
    ASSERT_TRUE(waiting::untilExposed(*tabs));
    const QPoint place = tabs->tabBar()->mapTo(tabs, tabs->tabBar()->tabRect(1).center());
    QTest::mouseClick(tabs->windowHandle(), Qt::LeftButton, {}, place);
    EXPECT_EQ(selected.count(), 0);
    EXPECT_EQ(tabs->currentIndex(), 0);
}

} // namespace
