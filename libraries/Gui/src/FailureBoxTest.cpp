#include "FailureBox.h"

#include "DialogDriver.h"

#include <QWidget>

#include <gtest/gtest.h>

namespace {

TEST(FailureBox, AStepThatThrowsShowsFirstLineAndReasonInACriticalBox)
{
    QWidget parent;
    DialogDriver dialogs;
    dialogs.expectMessage(QStringLiteral("Error Loading"), QStringLiteral("Loading failed:\ngone"));
    EXPECT_FALSE(kelp::guarded(&parent, QStringLiteral("Loading failed:\n"),
                               QStringLiteral("Error Loading"),
                               [] { throw kelp::IOFailure("gone"); }));
}

TEST(FailureBox, AStepThatGoesThroughShowsNothing)
{
    DialogDriver dialogs;
    bool ran = false;
    EXPECT_TRUE(kelp::guarded(nullptr, QStringLiteral("first"), QStringLiteral("title"),
                              [&ran] { ran = true; }));
    EXPECT_TRUE(ran);
}

} // namespace
