#include "ProgressDisplay.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>

#include <gtest/gtest.h>

namespace {

QProgressDialog* openDialog()
{
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (auto* const dialog = qobject_cast<QProgressDialog*>(widget)) {
            return dialog;
        }
    }
    return nullptr;
}

TEST(ProgressDisplay, ShowsTextAndStepsInAModalWindowWithoutAButton)
{
    const kelp::ProgressDisplay display;
    CaProgressMonitor& monitor = CaProgressMonitor::getInstance();
    monitor.open(QStringLiteral("Copying data files..."), 3);
    const QProgressDialog* const dialog = openDialog();
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(QApplication::activeModalWidget(), dialog);
    EXPECT_EQ(dialog->labelText(), QStringLiteral("Copying data files..."));
    EXPECT_EQ(dialog->maximum(), 3);
    EXPECT_FALSE(dialog->findChild<QPushButton*>());
    monitor.step();
    EXPECT_EQ(dialog->value(), 1);
    monitor.step();
    monitor.step();
    EXPECT_EQ(dialog->value(), 3);
    EXPECT_TRUE(dialog->isVisible());
    monitor.close();
    EXPECT_FALSE(openDialog());
}

TEST(ProgressDisplay, AnOperationInsideAnotherSharesItsWindow)
{
    const kelp::ProgressDisplay display;
    CaProgressMonitor& monitor = CaProgressMonitor::getInstance();
    monitor.open(QStringLiteral("outer"), 2);
    monitor.open(QStringLiteral("inner"), 7);
    ASSERT_TRUE(openDialog());
    monitor.step();
    EXPECT_EQ(openDialog()->value(), 0);
    EXPECT_EQ(openDialog()->labelText(), QStringLiteral("outer"));
    monitor.close();
    monitor.step();
    ASSERT_TRUE(openDialog());
    EXPECT_EQ(openDialog()->value(), 1);
    monitor.close();
    EXPECT_FALSE(openDialog());
    monitor.close();
}

TEST(ProgressDisplay, NothingIsShownOnceItIsGone)
{
    {
        const kelp::ProgressDisplay display;
    }
    CaProgressMonitor::getInstance().open(QStringLiteral("later"), 1);
    EXPECT_FALSE(openDialog());
    CaProgressMonitor::getInstance().close();
}

} // namespace
