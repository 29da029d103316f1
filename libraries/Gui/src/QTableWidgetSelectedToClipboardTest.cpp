#include "QTableWidgetSelectedToClipboard.h"

#include "Waiting.h"
#include "kelpTrace.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

#include <gtest/gtest.h>

#include <sstream>

namespace {

class TableWidget : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_table.setColumnCount(3);
        m_table.setRowCount(3);
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                m_table.setItem(row, column, new QTableWidgetItem(cellText(row, column)));
            }
        }
        m_table.show();
        ASSERT_TRUE(waiting::untilExposed(m_table));
        QGuiApplication::clipboard()->setText(QStringLiteral("before"));
        kelp::Trace::redirect(&m_trace);
    }
    void TearDown() override { kelp::Trace::redirect(nullptr); }

    static QString cellText(int row, int column)
    {
        return QStringLiteral("%1%2").arg(QChar('a' + row)).arg(column);
    }

    void clickCell(int row, int column, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const QRect place = m_table.visualItemRect(m_table.item(row, column));
        QTest::mouseClick(m_table.viewport(), Qt::LeftButton, modifiers, place.center());
    }

    void pressCopy(Qt::KeyboardModifiers modifiers = Qt::ControlModifier)
    {
        QTest::keyClick(&m_table, Qt::Key_C, modifiers);
    }

    static QString clipboard() { return QGuiApplication::clipboard()->text(); }

    QTableWidgetSelectedToClipboard m_table;
    std::ostringstream m_trace;
};

TEST_F(TableWidget, CopiesCellsOfARowApartByTabulatorsAndRowsByLineFeeds)
{
    clickCell(0, 0);
    clickCell(1, 2, Qt::ShiftModifier);
    pressCopy();
    EXPECT_EQ(clipboard(), QStringLiteral("a0\ta1\ta2\nb0\tb1\tb2"));
    EXPECT_EQ(m_trace.str(), "C O P Y\n");
}

TEST_F(TableWidget, LeavesOutWhatIsNotSelectedInBetween)
{
    clickCell(0, 1);
    clickCell(2, 0, Qt::ControlModifier);
    clickCell(2, 2, Qt::ControlModifier);
    pressCopy();
    EXPECT_EQ(clipboard(), QStringLiteral("a1\nc0\tc2"));
}

TEST_F(TableWidget, KeepsThePlaceOfSelectedCellsWithoutText)
{
    m_table.item(0, 0)->setText(QString());
    m_table.item(1, 0)->setText(QString());
    clickCell(0, 0);
    clickCell(1, 1, Qt::ShiftModifier);
    pressCopy();
    EXPECT_EQ(clipboard(), QStringLiteral("\ta1\n\tb1"));
}

TEST_F(TableWidget, PutsAnEmptyTextOnTheClipboardWithoutASelection)
{
    pressCopy();
    EXPECT_EQ(clipboard(), QString());
    EXPECT_EQ(m_trace.str(), "C O P Y\n");
}

TEST_F(TableWidget, CopiesWithControlAloneAndLeavesOtherKeysToTheView)
{
    clickCell(0, 0);
    pressCopy(Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(clipboard(), QStringLiteral("before"));
    EXPECT_EQ(m_trace.str(), "");
    QTest::keyClick(&m_table, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(m_table.selectedItems().size(), 9);
    pressCopy();
    EXPECT_EQ(clipboard(), QStringLiteral("a0\ta1\ta2\nb0\tb1\tb2\nc0\tc1\tc2"));
}

} // namespace
