#include "SavedState.h"

#include "Waiting.h"
#include "kelpSettings.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMouseEvent>
#include <QSplitter>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <gtest/gtest.h>

namespace {

/// Settings outlive a run of the tests, too.
QString freshKey()
{
    return QStringLiteral("test/") + QUuid::createUuid().toString(QUuid::WithoutBraces);
}

TEST(SavedState, ACheckedOptionComesBackAndKeepsItsOwnDefaultTheFirstTime)
{
    const QString key = freshKey();
    QCheckBox first;
    first.setChecked(true);
    kelp::rememberChecked(&first, key);
    EXPECT_TRUE(first.isChecked());
    first.show();
    QTest::mouseClick(&first, Qt::LeftButton, {}, QPoint(8, first.height() / 2));
    ASSERT_FALSE(first.isChecked());

    QCheckBox second;
    second.setChecked(true);
    kelp::rememberChecked(&second, key);
    EXPECT_FALSE(second.isChecked());
    EXPECT_TRUE(kelp::Settings::get(QStringLiteral("Gui/") + key, QVariant()).isValid());
}

TEST(SavedState, ATextComesBack)
{
    const QString key = freshKey();
    QLineEdit first;
    kelp::rememberText(&first, key);
    QTest::keyClicks(&first, QStringLiteral("export"));
    QLineEdit second;
    second.setText(QStringLiteral("default"));
    kelp::rememberText(&second, key);
    EXPECT_EQ(second.text(), QStringLiteral("export"));
}

void drag(QWidget* widget, const QPoint& from, const QPoint& to)
{
    QTest::mousePress(widget, Qt::LeftButton, {}, from);
    QMouseEvent move(QEvent::MouseMove, to, widget->mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, widget->mapFromGlobal(move.globalPos()));
}

struct TwoPanes
{
    TwoPanes()
    {
        for (int pane = 0; pane < 2; ++pane) {
            splitter.addWidget(new QWidget);
        }
        splitter.resize(600, 100);
        splitter.setSizes({300, 300});
    }
    QSplitter splitter;
};

TEST(SavedState, ASplitterThatTheUserMovedComesBack)
{
    const QString key = freshKey();
    TwoPanes first;
    kelp::rememberSplitter(&first.splitter, key);
    first.splitter.show();
    ASSERT_TRUE(waiting::untilExposed(first.splitter));
    QSplitterHandle* const handle = first.splitter.handle(1);
    drag(handle, QPoint(1, 50), QPoint(-150, 50));
    const QList<int> sizes = first.splitter.sizes();
    ASSERT_LT(sizes.at(0), 200);

    TwoPanes second;
    kelp::rememberSplitter(&second.splitter, key);
    second.splitter.show();
    ASSERT_TRUE(waiting::untilExposed(second.splitter));
    EXPECT_EQ(second.splitter.sizes(), sizes);
}

TEST(SavedState, TheLastFolderIsThatOfTheFileChosenLast)
{
    const QString key = freshKey();
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("scan.xml"));
    kelp::setLastFolder(key, file);
    EXPECT_EQ(QDir(kelp::lastFolder(key)), QDir(folder.path()));
    kelp::setLastFolder(key, QString());
    EXPECT_EQ(QDir(kelp::lastFolder(key)), QDir(folder.path()));
}

TEST(SavedState, ALastFolderThatIsGoneBecomesTheDocumentsOrElseHome)
{
    const QString key = freshKey();
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    ASSERT_FALSE(QDir(documents).exists()) << "the test has a home of its own";
    EXPECT_EQ(kelp::lastFolder(key), QDir::homePath());
    ASSERT_TRUE(QDir().mkpath(documents));
    EXPECT_EQ(kelp::lastFolder(freshKey()), documents);
    {
        const QTemporaryDir folder;
        kelp::setLastFolder(key, folder.path());
        EXPECT_EQ(kelp::lastFolder(key), folder.path());
    }
    EXPECT_EQ(kelp::lastFolder(key), documents);
    EXPECT_TRUE(QDir().rmdir(documents));
}

} // namespace
