#include "ElidedLabel.h"

#include <gtest/gtest.h>

using kelp::ElidedLabel;

namespace {

TEST(ElidedLabel, GivesWayAndTellsTheWholeTextInItsToolTip)
{
    ElidedLabel label;
    const QString text = QString(500, QLatin1Char('m')) + QStringLiteral("\nsecond line");
    label.setWidestCharacters(20);
    label.setFullText(text);
    EXPECT_EQ(label.toolTip(), text);
    EXPECT_FALSE(label.text().contains(QLatin1Char('\n')));
    EXPECT_LE(label.sizeHint().width(), 20 * label.fontMetrics().averageCharWidth());
    EXPECT_LT(label.minimumSizeHint().width(), label.sizeHint().width());
}

TEST(ElidedLabel, AsksForNoMoreRoomThanAShortTextNeeds)
{
    ElidedLabel label;
    label.setFullText(QStringLiteral("x"));
    EXPECT_LE(label.sizeHint().width(),
              label.fontMetrics().horizontalAdvance(QStringLiteral("x")) + 1);
    EXPECT_LE(label.minimumSizeHint().width(), label.sizeHint().width());
}

TEST(ElidedLabel, PaintsTheEndAwayWhereItIsNarrow)
{
    ElidedLabel narrow;
    narrow.setFullText(QStringLiteral("A patient with a long name"));
    ElidedLabel elided;
    constexpr int width = 80;
    narrow.resize(width, narrow.sizeHint().height());
    elided.setFullText(
        narrow.fontMetrics().elidedText(narrow.text(), Qt::ElideRight, narrow.width()));
    ASSERT_NE(elided.text(), narrow.text());
    elided.resize(narrow.size());
    EXPECT_EQ(narrow.grab().toImage(), elided.grab().toImage());
}

} // namespace
