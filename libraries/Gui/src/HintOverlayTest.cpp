#include "HintOverlay.h"

#include "Waiting.h"

#include <QGraphicsView>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using kelp::HintOverlay;

namespace {

TEST(HintOverlay, IsHiddenWithoutATextAndShownWithOne)
{
    QWidget target;
    HintOverlay overlay(&target);
    target.show();
    EXPECT_FALSE(overlay.isVisible());
    overlay.setHint(QStringLiteral("Select a study."));
    EXPECT_TRUE(overlay.isVisible());
    overlay.setHint(QString());
    EXPECT_FALSE(overlay.isVisible());
}

TEST(HintOverlay, CoversItsTargetHoweverThatIsResized)
{
    QListWidget target;
    HintOverlay overlay(&target);
    overlay.setHint(QStringLiteral("Select a study."));
    target.show();
    for (const QSize& size : {QSize(300, 200), QSize(640, 480), QSize(120, 90)}) {
        target.resize(size);
        EXPECT_EQ(overlay.geometry(), target.contentsRect());
    }
}

TEST(HintOverlay, CanBeReadOverWhateverItsTargetPaints)
{
    QGraphicsView dark;
    dark.setBackgroundBrush(Qt::black);
    for (QWidget* const target : {static_cast<QWidget*>(&dark), dark.viewport()}) {
        HintOverlay overlay(target);
        EXPECT_TRUE(overlay.autoFillBackground());
        EXPECT_EQ(overlay.backgroundRole(), QPalette::Base);
        EXPECT_EQ(overlay.foregroundRole(), QPalette::Text);
    }
    QWidget plain;
    const HintOverlay overlay(&plain);
    EXPECT_EQ(overlay.backgroundRole(), QPalette::Window);
    EXPECT_EQ(overlay.foregroundRole(), QPalette::WindowText);
}

TEST(HintOverlay, LetsTheMouseThrough)
{
    QWidget target;
    QVBoxLayout layout(&target);
    QPushButton button;
    layout.addWidget(&button);
    HintOverlay overlay(&target);
    overlay.setHint(QStringLiteral("Press the button."));
    target.resize(300, 200);
    target.show();
    ASSERT_TRUE(waiting::untilExposed(target));
    QSignalSpy clicked(&button, SIGNAL(clicked()));
    QTest::mouseClick(target.windowHandle(), Qt::LeftButton, {},
                      button.mapTo(&target, button.rect().center()));
    EXPECT_EQ(clicked.count(), 1);
}

TEST(HintOverlay, StaysInFrontOfChildrenThatComeLater)
{
    QWidget target;
    target.resize(300, 200);
    HintOverlay overlay(&target);
    overlay.setHint(QStringLiteral("Nothing here yet."));
    QWidget later(&target);
    later.setGeometry(target.rect());
    later.show();
    target.show();
    const QObjectList& children = target.children();
    EXPECT_GT(children.indexOf(&overlay), children.indexOf(&later));
}

} // namespace
