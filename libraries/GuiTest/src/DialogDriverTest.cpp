#include "DialogDriver.h"
#include "Waiting.h"

#include <QAction>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

TEST(DialogDriver, ReachesAMenuHoweverLongAgoADialogWasClosed)
{
    QWidget window;
    QAction entry(QStringLiteral("Entry"));
    window.addAction(&entry);
    window.setContextMenuPolicy(Qt::ActionsContextMenu);
    window.resize(200, 100);
    window.show();
    ASSERT_TRUE(waiting::untilExposed(window));
    const QSignalSpy chosen(&entry, SIGNAL(triggered()));
    DialogDriver dialogs;
    int expected = 0;
    // About 100 ms after it Qt takes in that the focus is nowhere, and closes what menu is open.
    for (int waitMs = 84; waitMs < 128; waitMs += 2) {
        QWidget other;
        other.show();
        ASSERT_TRUE(waiting::untilActivated(other));
        other.close();
        QTest::qWait(waitMs);
        dialogs.expectMenu(entry.text());
        dialogs.rightClick(window, window.rect().center());
        ++expected;
        ASSERT_EQ(chosen.count(), expected) << waitMs << " ms after it";
    }
}

} // namespace
