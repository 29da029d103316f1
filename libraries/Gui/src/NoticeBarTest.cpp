#include "NoticeBar.h"

#include "Appearance.h"
#include "Waiting.h"

#include <QAccessible>
#include <QApplication>
#include <QGraphicsView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <memory>

using kelp::Notice;
using kelp::NoticeBar;

namespace {

const Notice shortNotice{QStringLiteral("Something is odd"),
                         QStringLiteral("Look at it."),
                         {QStringLiteral("ILM: odd in B-scan 3")}};

Notice longNotice(int points)
{
    Notice notice = shortNotice;
    for (int i = 0; i < points; ++i) {
        notice.points.append(
            QStringLiteral("GCL, INL, ONL: no surface found in %1 % of the A-scans, "
                           "the result is not a segmentation")
                .arg(i));
    }
    return notice;
}

/// A window with an editor, the bar, and the view that it is about.
class NoticeBarInWindow : public testing::Test
{
protected:
    void SetUp() override
    {
        auto* const box = new QVBoxLayout(&m_window);
        m_editor = new QLineEdit;
        m_bar = new NoticeBar;
        m_view = new QGraphicsView;
        box->addWidget(m_editor);
        box->addWidget(m_bar);
        box->addWidget(m_view);
        m_window.resize(900, 500);
        m_window.show();
        ASSERT_TRUE(waiting::untilExposed(m_window));
        ASSERT_TRUE(waiting::untilFocused(*m_editor));
    }
    QLabel& text() const { return *m_bar->findChild<QLabel*>(QStringLiteral("noticeText")); }
    QPushButton& button() const
    {
        return *m_bar->findChild<QPushButton*>(QStringLiteral("closeNotice"));
    }
    QScrollBar& scrollBar() const { return *m_bar->findChild<QScrollArea*>()->verticalScrollBar(); }
    void show(const Notice& notice) const
    {
        m_bar->showNotice(notice);
        QCoreApplication::processEvents();
    }
    /// Nothing of the text is cut off, nor is there room for more.
    void expectFits() const
    {
        EXPECT_TRUE(waiting::until([this] {
            return text().height() == text().heightForWidth(text().width()) &&
                   scrollBar().maximum() == 0;
        })) << text().height();
    }

    QWidget m_window;
    QLineEdit* m_editor = nullptr;
    NoticeBar* m_bar = nullptr;
    QGraphicsView* m_view = nullptr;
};

TEST_F(NoticeBarInWindow, TakesNoRoomUntilThereIsANotice)
{
    EXPECT_FALSE(m_bar->isVisible());
    const int heightOfView = m_view->height();
    show(shortNotice);
    EXPECT_TRUE(m_bar->isVisible());
    EXPECT_LE(m_bar->geometry().bottom(), m_view->geometry().top());
    EXPECT_LT(m_view->height(), heightOfView);
    m_bar->hide();
    QCoreApplication::processEvents();
    EXPECT_EQ(m_view->height(), heightOfView);
}

TEST_F(NoticeBarInWindow, IsClosedByItsButton)
{
    show(shortNotice);
    QTest::mouseClick(&button(), Qt::LeftButton);
    EXPECT_FALSE(m_bar->isVisible());
}

TEST_F(NoticeBarInWindow, IsReachedByTabAndClosedWithTheKeyboard)
{
    show(shortNotice);
    for (int i = 0; i < 3 && !button().hasFocus(); ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    ASSERT_TRUE(button().hasFocus());
    QTest::keyClick(&button(), Qt::Key_Space);
    EXPECT_FALSE(m_bar->isVisible());
    EXPECT_TRUE(m_window.isActiveWindow());
}

TEST_F(NoticeBarInWindow, EscapeClosesItFromWhereverTheUserWorks)
{
    show(shortNotice);
    EXPECT_TRUE(m_editor->hasFocus()) << "the notice took the focus";
    QTest::keyClick(m_editor, Qt::Key_Escape);
    EXPECT_FALSE(m_bar->isVisible());
}

TEST_F(NoticeBarInWindow, LeavesEscapeAloneWhileItIsClosed)
{
    class EscapeCounter : public QObject
    {
    public:
        int count = 0;

    protected:
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::KeyPress) {
                ++count;
            }
            return false;
        }
    } counter;
    m_editor->installEventFilter(&counter);
    QTest::keyClick(m_editor, Qt::Key_Escape);
    EXPECT_EQ(counter.count, 1);
    show(shortNotice);
    QTest::keyClick(m_editor, Qt::Key_Escape);
    EXPECT_EQ(counter.count, 1);
}

TEST_F(NoticeBarInWindow, ShowsTheNewestNoticeOnly)
{
    show(longNotice(3));
    show(shortNotice);
    EXPECT_TRUE(text().text().contains(QStringLiteral("odd in B-scan 3")));
    EXPECT_FALSE(text().text().contains(QStringLiteral("GCL")));
    expectFits();
}

TEST_F(NoticeBarInWindow, TakesWhatItIsToldAsPlainText)
{
    show({QStringLiteral("<b>a"), QStringLiteral("</ul>"), {QStringLiteral("x < y & z")}});
    const QString markup = text().text();
    EXPECT_TRUE(markup.contains(QStringLiteral("&lt;b&gt;a")));
    EXPECT_TRUE(markup.contains(QStringLiteral("x &lt; y &amp; z")));
    EXPECT_TRUE(markup.contains(QStringLiteral("&lt;/ul&gt;")));
}

TEST_F(NoticeBarInWindow, WrapsItsTextInAnyWidthAndWithLargeFonts)
{
    show(longNotice(1));
    const int heightOfWide = text().height();
    expectFits();
    m_window.resize(560, 500);
    QCoreApplication::processEvents();
    EXPECT_EQ(m_window.width(), 560) << "the bar does not give way";
    EXPECT_GT(text().height(), heightOfWide);
    expectFits();
    m_window.resize(1280, 700);
    QFont large = m_bar->font();
    large.setPointSize(20);
    m_bar->setFont(large);
    QCoreApplication::processEvents();
    EXPECT_GT(text().height(), heightOfWide);
    expectFits();
}

TEST_F(NoticeBarInWindow, ALongOneScrollsInsteadOfPushingTheViewAway)
{
    show(longNotice(40));
    EXPECT_LT(m_bar->height(), 200);
    EXPECT_GT(m_view->height(), 200);
    EXPECT_GT(scrollBar().maximum(), 0);
    EXPECT_GT(text().height(), 600);
    // The bar of the scrolling does not cover the ends of the lines.
    EXPECT_LE(text().width(), scrollBar().parentWidget()->x());
}

TEST_F(NoticeBarInWindow, TellsItsTextToAssistiveTechnology)
{
    show(shortNotice);
    EXPECT_EQ(m_bar->accessibleName(), shortNotice.title);
    EXPECT_EQ(m_bar->accessibleDescription(), QStringLiteral("Look at it.\nILM: odd in B-scan 3"));
    QAccessibleInterface* const close = QAccessible::queryAccessibleInterface(&button());
    ASSERT_TRUE(close);
    EXPECT_EQ(close->text(QAccessible::Name), QStringLiteral("Close"));
}

TEST_F(NoticeBarInWindow, IsPaintedInTheColoursOfThePalette)
{
    show(shortNotice);
    for (const QPalette& palette : {kelp::lightPalette(), kelp::darkPalette()}) {
        m_window.setPalette(palette);
        const QColor ground = palette.color(QPalette::ToolTipBase);
        const QColor ink = palette.color(QPalette::ToolTipText);
        const QImage picture = m_bar->grab().toImage();
        int inked = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                inked += picture.pixelColor(x, y) == ink ? 1 : 0;
            }
        }
        EXPECT_GT(inked, 50);
        EXPECT_EQ(picture.pixelColor(button().x() - 3, picture.height() / 2), ground);
        EXPECT_EQ(picture.pixelColor(4, picture.height() - 4), ground);
    }
}

} // namespace
