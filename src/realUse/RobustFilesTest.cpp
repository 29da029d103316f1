#include "AppBase.h"
#include "BatchTab.h"
#include "RealUseFixture.h"
#include "ScanTabs.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>

#include <gtest/gtest.h>

// Files that are gone, or not to be had, at the moment they are needed.

using namespace scantabs;
using kelp::phantom::Export;
using kelp::phantom::Pattern;

namespace {

class RobustFiles : public RealUseFixture
{
protected:
    /// Takes away what imports have copied, and puts it back.
    void hideCopiedFiles() const
    {
        ASSERT_TRUE(QDir().rename(copiedFiles(), path(QStringLiteral("hidden"))));
        ASSERT_TRUE(QDir().mkpath(copiedFiles()));
    }
    void showCopiedFiles() const
    {
        ASSERT_TRUE(QDir().rmdir(copiedFiles()));
        ASSERT_TRUE(QDir().rename(path(QStringLiteral("hidden")), copiedFiles()));
    }

    /// Chooses the export's file and lets something happen to its folder before "OK".
    template <typename Meanwhile>
    static void addAfter(ApplicationDriver& user, const QString& xmlPath,
                         const Meanwhile& meanwhile, const DialogDriver::Answer& then)
    {
        user.dialogs.expect([&](QDialog& dialog) {
            user.dialogs.expectFileDialog(xmlPath);
            auto* const plus = dialog.findChild<QAbstractButton*>(QStringLiteral("addFileButton"));
            ASSERT_TRUE(plus);
            QTest::mouseClick(plus, Qt::LeftButton);
            meanwhile();
            user.dialogs.expect([](QDialog& series) {
                EXPECT_EQ(series.windowTitle(), QStringLiteral("Select a Series"));
                DialogDriver::click(series, QStringLiteral("OK"));
            });
            then(dialog);
        });
        user.click(QStringLiteral("Add Data"));
    }
};

TEST_F(RobustFiles, AnExportThatGoesBetweenChoosingAndAddingIsNotAdded)
{
    const QString xml = writeExport(QStringLiteral("volume")).xmlPath;
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {});
        const QMap<QString, QByteArray> before = storedTrees();
        addAfter(
            user, xml, [&] { ASSERT_TRUE(QFile::remove(xml)); },
            [](QDialog& dialog) {
                DialogDriver::click(dialog, QStringLiteral("OK"));
                EXPECT_TRUE(dialog.isVisible());
                EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("loadingMessage"))->text(),
                          QStringLiteral("This file holds no volume and no section to add."));
                DialogDriver::click(dialog, QStringLiteral("Cancel"));
            });
        EXPECT_EQ(storedTrees(), before);
    });
}

TEST_F(RobustFiles, ImagesThatGoBetweenChoosingAndAddingAreTold)
{
    const Export written = writeExport(QStringLiteral("volume"));
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {});
        addAfter(
            user, written.xmlPath, [&] { ASSERT_TRUE(QFile::remove(written.imagePaths.last())); },
            [&](QDialog& dialog) {
                user.dialogs.expectMessageContaining(QStringLiteral("Copying File Error"),
                                                     QStringLiteral("Could not copy file"));
                DialogDriver::click(dialog, QStringLiteral("OK"));
            });
        user.selectTab(automaticTab);
        user.dialogs.expectMessageContaining(QStringLiteral("Error selecting the OCT"),
                                             QStringLiteral("Error selecting the OCT: "));
        user.openScan();
        EXPECT_FALSE(user.isEnabled(QStringLiteral("Segment Normal")));
    });
}

TEST_F(RobustFiles, AScanWhoseImagesAreGoneIsToldAndIsThereAgainWithThem)
{
    const QString xml = writeExport(QStringLiteral("volume")).xmlPath;
    QString payload;
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, xml);
        payload = user.shownSegmentation()->toBase64String();
    });
    const QMap<QString, QByteArray> trees = storedTrees();
    hideCopiedFiles();
    use([&](ApplicationDriver& user) {
        user.dialogs.expectMessageContaining(QStringLiteral("Error selecting the OCT"),
                                             QStringLiteral("Error selecting the OCT: "));
        user.openScan();
        EXPECT_FALSE(user.isEnabled(QStringLiteral("Segment Normal")));
        user.selectTab(manualTab);
        user.selectTab(measurementTab);
        user.selectTab(automaticTab);

        showCopiedFiles();
        user.openScan();
        user.choose(user.find<QAbstractItemView>("segmentationList"), 0);
        EXPECT_EQ(drawnLayers(user).size(), 6);
        EXPECT_EQ(user.shownSegmentation()->toBase64String(), payload);
    });
    EXPECT_EQ(storedTrees(), trees);
}

TEST_F(RobustFiles, AScanStaysInHandWhenItsImagesGoWhileItIsShown)
{
    const QString xml = writeExport(QStringLiteral("volume")).xmlPath;
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, xml);
        hideCopiedFiles();
        user.selectTab(manualTab);
        const QString ilm = QStringLiteral("ILM");
        const int wanted = rowOf(user, ilm, 50) - 8;
        pickLayer(user, ilm, 50);
        drawStroke(user, {QPointF(45, wanted + 0.5), QPointF(55, wanted + 0.5)});
        EXPECT_NEAR(rowOf(user, ilm, 50), wanted, 1);
        EXPECT_TRUE(ApplicationDriver::waitFor([&] { return isStored(user.shownSegmentation()); }));
        user.selectTab(automaticTab);
        user.segment(QStringLiteral("Segment Normal"));
        EXPECT_EQ(drawnLayers(user).size(), 6);
    });
}

TEST_F(RobustFiles, ABatchTellsTheScansWhoseImagesAreGoneAndDoesTheOthers)
{
    writeExport(QStringLiteral("1"), Pattern::Section, 1);
    writeExport(QStringLiteral("2"), Pattern::Section, 2);
    use([&](ApplicationDriver& user) {
        user.selectTab(batchtab::tabName);
        batchtab::importFolder(user, exports());
        const QStringList folders = QDir(copiedFiles()).entryList({QStringLiteral("HRA_XML_*")});
        ASSERT_EQ(folders.size(), 2);
        const QDir first(copiedFiles() + QLatin1Char('/') + folders.first());
        for (const QString& image : first.entryList({QStringLiteral("*.tif")})) {
            ASSERT_TRUE(QFile::remove(first.filePath(image)));
        }
        batchtab::checkAll(user);
        batchtab::start(user);
        batchtab::waitForTheEnd(user);
        EXPECT_EQ(batchtab::countInLog(user, QStringLiteral("Segmentation error for patient")), 1);
        EXPECT_EQ(batchtab::countInLog(user, QStringLiteral("Segmentation success for patient")),
                  1);
        EXPECT_EQ(batchtab::log(user).last(),
                  QStringLiteral("Finished batch-segmenting OCT scans"));
    });
}

TEST_F(RobustFiles, ResultsThatCannotBeWrittenAreToldAndTheWorkGoesOn)
{
    const QString xml = writeExport(QStringLiteral("volume")).xmlPath;
    const QString blocked = path(QStringLiteral("blocked"));
    ASSERT_TRUE(QDir().mkpath(blocked + QStringLiteral("/layer_ILM.csv")));
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, xml);
        user.tick(QStringLiteral("Layer Positions as CSV"));
        user.dialogs.expectFileDialog(blocked);
        user.dialogs.expectMessageContaining(QStringLiteral("Export Error"),
                                             QStringLiteral("layer_ILM.csv"));
        user.click(QStringLiteral("Export"));
        EXPECT_EQ(user.dialogs.pending(), 0);
        // A folder in which nobody can make a file.
        user.dialogs.expectFileDialog(QStringLiteral("/proc"));
        user.dialogs.expectMessageContaining(QStringLiteral("Export Error"),
                                             QStringLiteral("/proc/layer_ILM.csv"));
        user.click(QStringLiteral("Export"));
        EXPECT_EQ(user.dialogs.pending(), 0);

        user.selectTab(measurementTab);
        user.dialogs.expectMenu(QStringLiteral("Save image with ETDRS"));
        user.dialogs.expectFileDialog(QStringLiteral("/proc/map.png"));
        user.dialogs.expectMessage(QStringLiteral("Error saving the screenshot"),
                                   QStringLiteral("The screenshot could not be saved!"));
        auto& viewer = user.find<QAbstractScrollArea>("measurementViewer");
        user.dialogs.rightClick(*viewer.viewport(), viewer.viewport()->rect().center());
        const QString picture = path(QStringLiteral("map.png"));
        savePicture(user, QStringLiteral("Save image with ETDRS"), picture);
        EXPECT_TRUE(QFile::exists(picture));
    });
}

} // namespace
