#include "AppBase.h"
#include "BatchTab.h"
#include "OCTMeasurementViewer.h"
#include "RealUseFixture.h"
#include "ScanTabs.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QTest>

#include <gtest/gtest.h>

// Every dialog of the application, opened and left without an answer: nothing changes.

using namespace scantabs;

namespace {

/// Restores the current folder of the process.
class InFolder
{
public:
    explicit InFolder(const QString& folder) : m_former(QDir::currentPath())
    {
        EXPECT_TRUE(QDir().mkpath(folder) && QDir::setCurrent(folder));
    }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;
    ~InFolder() { QDir::setCurrent(m_former); }

private:
    QString m_former;
};

class RobustDialogs : public RealUseFixture
{
protected:
    /// The next dialog has this title and is left with the Escape key.
    static void expectEscaped(ApplicationDriver& user, const QString& title)
    {
        user.dialogs.expect([title](QDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), title);
            QTest::keyClick(&dialog, Qt::Key_Escape);
            EXPECT_FALSE(dialog.isVisible()) << title.toStdString();
        });
    }
    static void escape(ApplicationDriver& user, const char* button, const QString& title)
    {
        expectEscaped(user, title);
        user.click(QString::fromLatin1(button));
        EXPECT_EQ(user.dialogs.pending(), 0) << title.toStdString();
    }
    static void escape(ApplicationDriver& user, const char* view, Qt::Key key, const QString& title)
    {
        expectEscaped(user, title);
        user.press(user.find<QAbstractItemView>(view), key);
        ApplicationDriver::waitFor([&user] { return user.dialogs.pending() == 0; });
    }

    const QString m_xml = writeExport(QStringLiteral("volume")).xmlPath;
};

TEST_F(RobustDialogs, ThoseOfThePatientManagerChangeNothingWhenTheyAreCancelled)
{
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {m_xml});
        const QMap<QString, QByteArray> before = storedTrees();
        escape(user, "New Patient", QStringLiteral("New Patient"));
        escape(user, "patientList", Qt::Key_F2, QStringLiteral("Edit Patient"));
        escape(user, "patientList", Qt::Key_Delete, QStringLiteral("Delete"));
        escape(user, "New Study", QStringLiteral("New Study"));
        escape(user, "studyTree", Qt::Key_F2, QStringLiteral("Rename"));
        escape(user, "studyTree", Qt::Key_Delete, QStringLiteral("Delete"));
        user.chooseLine(QStringLiteral("Baseline"));
        escape(user, "studyTree", Qt::Key_F2, QStringLiteral("Rename Study"));
        escape(user, "studyTree", Qt::Key_Delete, QStringLiteral("Delete"));
        escape(user, "Import", QStringLiteral("Choose an Exported Folder"));
        escape(user, "Export", QStringLiteral("Export"));
        user.dialogs.expect([&user](QDialog& dialog) {
            expectEscaped(user, QStringLiteral("Choose the Destination"));
            DialogDriver::click(dialog, QStringLiteral("Browse"));
            QTest::keyClick(&dialog, Qt::Key_Escape);
        });
        user.click(QStringLiteral("Export"));
        EXPECT_EQ(storedTrees(), before);
    });
}

TEST_F(RobustDialogs, ThoseOfAddingAScanChangeNothingWhenTheyAreCancelled)
{
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {});
        const QMap<QString, QByteArray> before = storedTrees();
        escape(user, "Add Data", QStringLiteral("Add Data"));
        user.dialogs.expect([&](QDialog& dialog) {
            auto* const plus = dialog.findChild<QAbstractButton*>(QStringLiteral("addFileButton"));
            ASSERT_TRUE(plus);
            expectEscaped(user, QStringLiteral("Choose a File"));
            QTest::mouseClick(plus, Qt::LeftButton);
            user.dialogs.expectFileDialog(m_xml);
            QTest::mouseClick(plus, Qt::LeftButton);
            expectEscaped(user, QStringLiteral("Select a Series"));
            DialogDriver::click(dialog, QStringLiteral("OK"));
            EXPECT_TRUE(dialog.isVisible());
            QTest::keyClick(&dialog, Qt::Key_Escape);
        });
        user.click(QStringLiteral("Add Data"));
        EXPECT_EQ(storedTrees(), before);
        EXPECT_TRUE(QDir(copiedFiles()).isEmpty());
    });
}

TEST_F(RobustDialogs, ThoseOfTheScansTabsChangeNothingWhenTheyAreCancelled)
{
    const InFolder current(path(QStringLiteral("current")));
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_xml);
        const OCTScanSegPtr segmentation = user.shownSegmentation();
        const QMap<QString, QByteArray> before = storedTrees();
        escape(user, "Delete", QStringLiteral("Delete Segmentation"));
        escape(user, "Edit Mask", QStringLiteral("Edit Mask"));
        user.dialogs.expectMessage(
            QStringLiteral("Export Requirements"),
            QStringLiteral("Please select at least one of the export options above."));
        user.click(QStringLiteral("Export"));
        // Without an answer the export goes to the current folder.
        user.tick(QStringLiteral("MetaImage"));
        escape(user, "Export", QStringLiteral("Export Folder Selection"));
        EXPECT_TRUE(QFileInfo::exists(QStringLiteral("oct.mha")));

        user.selectTab(measurementTab);
        savePicture(user, QStringLiteral("Save image with ETDRS"), QString());
        EXPECT_EQ(QDir().entryList(QDir::Files).size(), 2);
        user.selectTab(automaticTab);
        EXPECT_EQ(user.shownSegmentation(), segmentation);
        EXPECT_EQ(storedTrees(), before);
    });
}

TEST_F(RobustDialogs, ThatOfTheBatchImportSearchesTheCurrentFolderWhenItIsCancelled)
{
    const InFolder current(path(QStringLiteral("current")));
    use([&](ApplicationDriver& user) {
        user.selectTab(batchtab::tabName);
        batchtab::importFolder(user, QString());
        EXPECT_EQ(batchtab::countInLog(user, QStringLiteral("Found 0 XMLs to import")), 1);
        // With nothing checked there is nothing to wait for.
        batchtab::start(user);
        batchtab::waitForTheEnd(user);
    });
    EXPECT_TRUE(storedTrees().isEmpty());
}

} // namespace
