#include "AppBase.h"
#include "RealUseFixture.h"
#include "ScanTabs.h"

#include <QAbstractItemView>
#include <QDir>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

// Patients that go from one store to another.

using namespace scantabs;

namespace {

class RobustExchange : public RealUseFixture
{
protected:
    RobustExchange() { EXPECT_TRUE(QDir().mkpath(stick())); }

    QString stick() const { return path(QStringLiteral("stick")); }
    QStringList exportFolders() const
    {
        return QDir(stick()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    QString onlyExport() const
    {
        EXPECT_EQ(exportFolders().size(), 1);
        return stick() + QLatin1Char('/') + exportFolders().value(0);
    }
    /// From the next start on.
    void goToOtherComputer() const
    {
        qputenv("TESSERA_STORE", path(QStringLiteral("other")).toUtf8());
    }

    /// The selected patient; the report at the end contains this.
    void exportPatient(ApplicationDriver& user, const QString& report) const
    {
        user.selectTab(QStringLiteral("Patient Manager"));
        user.dialogs.expect([&](QDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Export"));
            auto* const folder = dialog.findChild<QLineEdit*>(QStringLiteral("exportFolder"));
            ASSERT_TRUE(folder);
            folder->selectAll();
            QTest::keyClicks(folder, stick());
            user.dialogs.expectMessageContaining(QStringLiteral("Export"), report);
            DialogDriver::click(dialog, QStringLiteral("Export"));
        });
        user.click(QStringLiteral("Export"));
        EXPECT_EQ(user.dialogs.pending(), 0);
    }
    void importPatient(ApplicationDriver& user, const QString& report) const
    {
        user.dialogs.expectFileDialog(onlyExport());
        user.dialogs.expectMessageContaining(QStringLiteral("Import"), report);
        user.click(QStringLiteral("Import"));
        EXPECT_EQ(user.dialogs.pending(), 0);
    }

    const QString m_xml = writeExport(QStringLiteral("volume")).xmlPath;
};

TEST_F(RobustExchange, APatientIsTheSameOnAnotherComputer)
{
    QString payload;
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_xml);
        payload = user.shownSegmentation()->toBase64String();
        exportPatient(user, QStringLiteral("Exported 1 patient"));
    });
    ASSERT_TRUE(QDir(store()).removeRecursively());
    ASSERT_TRUE(QDir(exports()).removeRecursively());
    goToOtherComputer();
    use([&](ApplicationDriver& user) {
        importPatient(user, QStringLiteral("Imported 1 patient"));
        user.choosePatient(QStringLiteral("Ada Lindqvist"));
        user.chooseLine(QStringLiteral("Baseline"));
        user.selectTab(automaticTab);
        user.openScan();
        user.choose(user.find<QAbstractItemView>("segmentationList"), 0);
        EXPECT_EQ(user.shownSegmentation()->toBase64String(), payload);
        EXPECT_EQ(drawnLayers(user).size(), 6);
    });
}

TEST_F(RobustExchange, ACancelledExportLeavesNothingBehind)
{
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {m_xml});
        user.cancelProgressAt(0);
        exportPatient(user, QStringLiteral("Cancelled before the end."));
    });
    EXPECT_EQ(exportFolders(), QStringList());
}

TEST_F(RobustExchange, ACancelledImportLeavesNothingBehind)
{
    use([&](ApplicationDriver& user) {
        makePatientWithScans(user, {m_xml});
        exportPatient(user, QStringLiteral("Exported 1 patient"));
    });
    goToOtherComputer();
    use([&](ApplicationDriver& user) {
        user.cancelProgressAt(0);
        importPatient(user, QStringLiteral("Cancelled before the end."));
        EXPECT_TRUE(user.texts(user.find<QAbstractItemView>("patientList")).isEmpty());
    });
    const QDir other(path(QStringLiteral("other")));
    for (const char* const part : {"patients", "studies", "binary"}) {
        EXPECT_TRUE(QDir(other.filePath(QString::fromLatin1(part))).isEmpty()) << part;
    }
}

TEST_F(RobustExchange, CorrectionsGoIntoAPatientThatAnImportPutInPlaceOfTheOpenOne)
{
    QString payload;
    use([&](ApplicationDriver& user) {
        makeSegmentedScan(user, m_xml);
        const QString exported = user.shownSegmentation()->toBase64String();
        exportPatient(user, QStringLiteral("Exported 1 patient"));
        user.selectTab(automaticTab);
        deleteAllMasks(user);
        EXPECT_NE(user.shownSegmentation()->toBase64String(), exported);

        user.selectTab(QStringLiteral("Patient Manager"));
        user.dialogs.expectFileDialog(onlyExport());
        user.dialogs.expectMessageContaining(
            QStringLiteral("Import"), QStringLiteral("is here already"), QStringLiteral("Replace"));
        user.dialogs.expectMessageContaining(QStringLiteral("Import"),
                                             QStringLiteral("Ada Lindqvist"));
        user.click(QStringLiteral("Import"));
        EXPECT_EQ(user.dialogs.pending(), 0);

        user.selectTab(manualTab);
        EXPECT_EQ(user.shownSegmentation()->toBase64String(), exported);
        const QString ilm = QStringLiteral("ILM");
        const double row = rowOf(user, ilm, 50) - 7.5;
        pickLayer(user, ilm, 50);
        drawStroke(user, {QPointF(45, row), QPointF(55, row)});
        payload = user.shownSegmentation()->toBase64String();
        EXPECT_NE(payload, exported);
        EXPECT_TRUE(ApplicationDriver::waitFor([&] { return isStored(user.shownSegmentation()); }));
    });
    use([&](ApplicationDriver& user) {
        user.selectTab(automaticTab);
        user.openScan();
        user.choose(user.find<QAbstractItemView>("segmentationList"), 0);
        EXPECT_EQ(user.shownSegmentation()->toBase64String(), payload);
    });
}

} // namespace
