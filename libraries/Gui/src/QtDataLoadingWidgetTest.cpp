#include "QtDataLoadingWidget.h"

#include "DialogDriver.h"
#include "QtDataPathModel.h"
#include "Waiting.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

namespace {

class TestLoadingWidget : public QtDataLoadingWidget
{
public:
    TestLoadingWidget(const QString& name, bool withNameField)
        : QtDataLoadingWidget(nullptr, name, nullptr, {}, withNameField)
    {
    }
    bool apply() override
    {
        showMessage(QStringLiteral("Not like this."));
        return false;
    }

protected:
    QString getFileFilter() const override { return QStringLiteral("Text files (*.txt)"); }
};

class LoadingWidget : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const char* const name : {"a.txt", "b.txt", "c.bin"}) {
            QFile file(path(name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
        m_widget.show();
        ASSERT_TRUE(waiting::untilExposed(m_widget));
    }
    QString path(const char* name) const { return m_directory.filePath(QLatin1String(name)); }
    void clickPlus()
    {
        QTest::mouseClick(m_widget.findChild<QToolButton*>(QStringLiteral("addFileButton")),
                          Qt::LeftButton);
    }
    void add(const QString& file)
    {
        DialogDriver dialogs;
        dialogs.expectFileDialog(file);
        clickPlus();
    }
    QListView* list() const { return m_widget.findChild<QListView*>(QStringLiteral("fileList")); }
    QStringList files() const
    {
        return qobject_cast<QtDataPathModel*>(list()->model())->stringList();
    }

    QTemporaryDir m_directory;
    TestLoadingWidget m_widget{QStringLiteral("given"), true};
};

TEST_F(LoadingWidget, ThePlusButtonAsksForAFileAndListsIt)
{
    add(path("a.txt"));
    EXPECT_EQ(files(), QStringList{path("a.txt")});
    EXPECT_EQ(list()->model()->index(0, 0).data().toString(),
              QDir::toNativeSeparators(path("a.txt")));
}

TEST_F(LoadingWidget, OfASingleFileTheNextOneReplacesTheFormer)
{
    add(path("a.txt"));
    add(path("b.txt"));
    EXPECT_EQ(files(), QStringList{path("b.txt")});
}

TEST_F(LoadingWidget, OfSeveralFilesEachIsListedOnce)
{
    m_widget.setSelectionMode(1);
    add(path("a.txt"));
    add(path("b.txt"));
    add(path("a.txt"));
    EXPECT_EQ(files(), QStringList({path("a.txt"), path("b.txt")}));
}

TEST_F(LoadingWidget, ACancelledFileDialogChangesNothing)
{
    add(path("a.txt"));
    add(QString());
    EXPECT_EQ(files(), QStringList{path("a.txt")});
}

TEST_F(LoadingWidget, TheDeleteKeyTakesTheSelectedFilesOffTheList)
{
    m_widget.setSelectionMode(1);
    add(path("a.txt"));
    add(path("b.txt"));
    add(path("c.bin"));
    ASSERT_TRUE(waiting::untilFocused(*list()));
    list()->setCurrentIndex(list()->model()->index(0, 0));
    QTest::keyClick(list(), Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(list(), Qt::Key_Delete);
    EXPECT_EQ(files(), QStringList{path("c.bin")});
    EXPECT_TRUE(QFile::exists(path("a.txt")));
}

TEST_F(LoadingWidget, TheFileDialogShowsTheFilterAndOpensWhereItWasLast)
{
    add(path("b.txt"));
    DialogDriver dialogs;
    dialogs.expect([this](QDialog& dialog) {
        const auto* const fileDialog = qobject_cast<QFileDialog*>(&dialog);
        ASSERT_TRUE(fileDialog);
        EXPECT_EQ(fileDialog->nameFilters(), QStringList{QStringLiteral("Text files (*.txt)")});
        EXPECT_EQ(fileDialog->directory().absolutePath(), m_directory.path());
        dialog.reject();
    });
    clickPlus();
}

TEST_F(LoadingWidget, TheItemsNameIsWhatStandsInTheFieldOrElseTheOneGiven)
{
    auto* const edit = m_widget.findChild<QLineEdit*>(QStringLiteral("nameEdit"));
    EXPECT_EQ(edit->text(), QStringLiteral("given"));
    edit->selectAll();
    QTest::keyClicks(edit, QStringLiteral("  left eye "));
    EXPECT_EQ(m_widget.getItemName(), QStringLiteral("left eye"));
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    EXPECT_EQ(m_widget.getItemName(), QStringLiteral("given"));
}

TEST_F(LoadingWidget, WhatIsWrongStandsBelowTheListUntilTheListChanges)
{
    const auto* const message = m_widget.findChild<QLabel*>(QStringLiteral("loadingMessage"));
    EXPECT_FALSE(message->isVisible());
    EXPECT_FALSE(m_widget.apply());
    EXPECT_TRUE(message->isVisible());
    EXPECT_EQ(message->text(), QStringLiteral("Not like this."));
    add(path("a.txt"));
    EXPECT_FALSE(message->isVisible());
}

TEST(LoadingWidgetWithoutName, HidesTheNameField)
{
    TestLoadingWidget widget(QStringLiteral("given"), false);
    widget.show();
    EXPECT_FALSE(widget.findChild<QLineEdit*>(QStringLiteral("nameEdit"))->isVisible());
    EXPECT_EQ(widget.getItemName(), QStringLiteral("given"));
}

} // namespace
